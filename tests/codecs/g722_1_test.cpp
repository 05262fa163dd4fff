// Frames of G.722.1 that are lost or damaged, and its transform. Its audio is checked against the
// standard's vectors.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <random>
#include <string>

#include "codecs/engines/g722_1/inverse_transform.h"
#include "codecs/engines/g722_1/transform_tables.h"
#include "tests/engine_coder.h"

namespace Quorvex {
namespace {

using Frame = std::array<unsigned char, 60>;

struct Decoder {
  // The samples of a frame, or of an erased one.
  g722_1::Samples operator()(const Frame& frame, bool isErased = false) const {
    g722_1::Samples samples;
    const CodedFrame coded{frame.data(), frame.size(), isErased};
    EXPECT_EQ(coder.Decode(coded, samples.data()), EngineStatus::kOk);
    return samples;
  }
  int Peak(const Frame& frame, bool isErased = false) const {
    const auto [least, most] = std::ranges::minmax((*this)(frame, isErased));
    return std::max(-least, int{most});
  }

  const tests::EngineCoder coder{
      *FindSpeechEngine("IPP_G722.1"), {.modes = {.bitRate = 24000}}, 0xA5};
};

Frame Filled(unsigned char byte) {
  Frame frame;
  frame.fill(byte);
  return frame;
}

TEST(G7221, TakesFramesOfTheBitRateAlone) {
  constexpr unsigned char kData[80] = {};
  short samples[320];
  for (const std::size_t bytes : {0U, 1U, 59U, 61U, 80U}) {
    EXPECT_EQ(Decoder().coder.Decode({kData, bytes}, samples), EngineStatus::kBadFrame);
  }
}

TEST(G7221, RepeatsOneFrameAndThenFallsSilent) {
  constexpr int kSilence = 50;      // not 0: the transform adds a bias of at most 13
  const Frame damaged = Filled(0);  // bits that no code uses must be ones
  const Decoder decoder;
  EXPECT_LT(decoder.Peak(damaged, true), kSilence);
  for (const bool isErased : {true, false}) {
    const int before = decoder.Peak(Filled(0xFF));
    EXPECT_GT(decoder.Peak(damaged, isErased), before / 2);
    decoder.Peak(damaged, isErased);  // fades
    EXPECT_LT(decoder.Peak(damaged, isErased), kSilence);
  }
}

TEST(G7221, WhichFramesAreDamaged) {
  const struct {
    const char* powers;   // of region 0, and the difference of region 1; the others are the same
    const char* control;  // of the categories
    char rest, last;      // bits
    bool isGood;
  } cases[] = {
      {"11111 101", "0000", '1', '1', true},    // the largest power, 24
      {"11111 0100", "0000", '1', '1', false},  // 25
      {"00000 0111", "0000", '1', '1', true},   // the smallest, -15
      {"00000 01010", "0000", '1', '1', false},
      {"11111 101", "0000", '1', '0', false},  // a bit that no code uses
      {"11111 101", "1111", '0', '0', true},   // long codes, more than there are bits
      {"11111 101", "1110", '0', '0', false},  // not the coarsest categories
  };
  for (const auto& c : cases) {
    std::string bits = c.powers + std::string("00111000110000101111010011111110") + c.control;
    std::erase(bits, ' ');
    bits.resize(479, c.rest);
    bits += c.last;
    Frame frame = {};
    for (std::size_t i = 0; i < bits.size(); ++i) {
      frame[i / 8] = static_cast<unsigned char>(frame[i / 8] << 1 | (bits[i] == '1' ? 1 : 0));
    }
    const Decoder decoder, other;
    decoder(Filled(0xFF));
    other(Filled(0xFF));
    EXPECT_EQ(decoder(frame) != other(frame, true), c.isGood) << bits;
  }
}

// Halved at first, then 0.9 by the cores, then 2 * 0.5623 by each of five rotations. Halves of even
// numbers are exact.
TEST(G7221, TransformIsADCT) {
  const double scale = 0.5 * 0.9 * std::pow(2 * 0.5623, 5);
  g722_1::Spectrum spectrum;
  std::minstd_rand random(1);
  for (short& coefficient : spectrum.coefficients) {
    coefficient = static_cast<short>(static_cast<int>(random() >> 8) % 301 * 2 - 300);
  }
  g722_1::Samples samples;
  g722_1::InverseTransformPlain(spectrum, samples);
  for (std::size_t k = 0; k < samples.size(); ++k) {
    double sum = g722_1::kBias[k];
    for (std::size_t i = 0; i < samples.size(); ++i) {
      const double turns = (static_cast<double>(i) + 0.5) * (static_cast<double>(k) + 0.5) / 640;
      sum += scale * spectrum.coefficients[i] * std::cos(2 * std::numbers::pi * turns);
    }
    EXPECT_NEAR(samples[k], sum, 6) << k;
  }
}

}  // namespace
}  // namespace Quorvex
