// G.729A: frames that are lost or damaged. That its samples are exact is checked with the
// standard's vectors.
#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <random>
#include <vector>

#include "tests/engine_coder.h"

namespace Quorvex {
namespace {

constexpr std::size_t kFrame = 80;  // samples
using Frame = std::array<unsigned char, 10>;
using Frames = std::vector<Frame>;
using Samples = std::vector<short>;

const SpeechEngine& Engine() { return *FindSpeechEngine("IPP_G729A"); }
struct Decoder {
  Samples operator()(const Frames& frames, bool areErased = false) const {
    Samples samples(frames.size() * kFrame);
    for (std::size_t i = 0; i < frames.size(); ++i) {
      const CodedFrame frame{frames[i].data(), frames[i].size(), areErased};
      EXPECT_EQ(coder.Decode(frame, &samples[i * kFrame]), EngineStatus::kOk);
    }
    return samples;
  }

  unsigned char fill = 0xA5;
  const tests::EngineCoder coder{Engine(), {.modes = {.bitRate = 8000}}, fill};
};

// Any bits are a frame.
Frames Noise(std::size_t count) {
  std::minstd_rand random(1);
  Frames frames(count);
  for (Frame& frame : frames) {
    for (unsigned char& byte : frame) byte = static_cast<unsigned char>(random() >> 8);
  }
  return frames;
}

double Level(const Samples& samples, std::size_t begin = 0) {
  double sum = 0;
  for (std::size_t i = begin; i < samples.size(); ++i) sum += 1.0 * samples[i] * samples[i];
  return std::sqrt(sum / static_cast<double>(samples.size() - begin));
}

TEST(G729A, TakesFramesOfTenBytesAlone) {
  constexpr unsigned char kData[22] = {};
  short samples[kFrame];
  for (const std::size_t bytes : {0U, 1U, 2U, 9U, 11U, 20U, 22U}) {
    EXPECT_EQ(Decoder().coder.Decode({kData, bytes}, samples), EngineStatus::kBadFrame) << bytes;
  }
}

// A frame with the lags of its halves as they are sent, bits 18 and 51 on, and a parity of the
// first one's upper six bits.
Frame WithLags(Frame frame, unsigned first, unsigned second, bool isParityRight) {
  const auto set = [&frame](std::size_t at, std::size_t count, unsigned value) {
    for (std::size_t bit = at + count; bit-- > at; value >>= 1) {
      const unsigned mask = 0x80U >> bit % 8;
      const unsigned rest = frame[bit / 8] & ~mask;
      frame[bit / 8] = static_cast<unsigned char>(value % 2 != 0 ? rest | mask : rest);
    }
  };
  set(18, 8, first);
  set(26, 1, static_cast<unsigned>(std::popcount(first >> 2)) + (isParityRight ? 1 : 0));
  set(51, 5, second);
  return frame;
}

// 122 stands for 60 samples, and 11 then for 58. That is what a wrong parity leaves.
TEST(G729A, ALagWithAWrongParityIsNotLookedAt) {
  const Frames noise = Noise(3);
  const auto decode = [&noise](unsigned lag, bool isParityRight) {
    return Decoder()({noise[0], WithLags(noise[0], 122, 11, true),
                      WithLags(noise[1], lag, 20, isParityRight), noise[2]});
  };
  const Samples expected = decode(3 * 58 - 58, true);
  for (const unsigned lag : {0U, 100U, 255U}) {
    EXPECT_EQ(decode(lag, false), expected) << lag;
    EXPECT_NE(decode(lag, true), expected) << lag;
  }
}

TEST(G729A, WhatFollowsLostFramesFadesAndIsNotMuted) {
  const Decoder decoder;
  const double before = Level(decoder(Noise(10)));
  for (int i = 0; i < 20; ++i) EXPECT_GT(Level(decoder(Noise(1), true)), before / 100) << i;
  EXPECT_LT(Level(decoder(Noise(40), true), 20 * kFrame), before / 10);
}

}  // namespace
}  // namespace Quorvex
