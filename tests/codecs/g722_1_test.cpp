// Frames of G.722.1 that are lost or damaged. Its audio is checked against the standard's vectors.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>

#include "codecs/engine.h"

namespace Quorvex {
namespace {

struct G7221 : testing::Test {
  G7221() {
    const EngineOptions options{.modes = {.bitRate = 24000}};
    MemoryBank bank{.memory = memory.data()};
    engine.BankSizes(options, &bank);
    EXPECT_LE(bank.bytes, memory.size());
    EXPECT_EQ(engine.Initialize(options, &bank, &decoder), EngineStatus::kOk);
  }

  int Peak(const CodedFrame& frame) {
    EXPECT_EQ(engine.Decode(decoder, frame, samples.data()), EngineStatus::kOk);
    const auto [least, most] = std::ranges::minmax(samples);
    return std::max(-least, int{most});
  }

  const SpeechEngine& engine = *FindSpeechEngine("IPP_G722.1");
  alignas(std::max_align_t) std::array<unsigned char, 4096> memory;
  EngineHandle* decoder = nullptr;
  std::array<short, 320> samples{};
};

TEST_F(G7221, TakesFramesOfTheBitRateAlone) {
  constexpr unsigned char kData[80] = {};
  for (const std::size_t bytes : {0U, 1U, 59U, 61U, 80U}) {
    EXPECT_EQ(engine.Decode(decoder, {kData, bytes}, samples.data()), EngineStatus::kBadFrame);
  }
}

TEST_F(G7221, RepeatsOneFrameAndThenFallsSilent) {
  constexpr int kSilence = 50;             // not 0: the transform adds a bias of at most 13
  constexpr unsigned char kDamaged[60]{};  // bits that no code uses must be ones
  std::array<unsigned char, 60> loud;
  loud.fill(0xFF);
  EXPECT_LT(Peak({nullptr, 0, true}), kSilence);
  for (const bool isErased : {true, false}) {
    const int before = Peak({loud.data(), loud.size()});
    EXPECT_GT(Peak({kDamaged, sizeof kDamaged, isErased}), before / 2);
    Peak({kDamaged, sizeof kDamaged, isErased});  // fades
    EXPECT_LT(Peak({kDamaged, sizeof kDamaged, isErased}), kSilence);
  }
}

}  // namespace
}  // namespace Quorvex
