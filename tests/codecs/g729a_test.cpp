// G.729A: frames that are lost or damaged, and speech there and back. That its samples and frames
// are exact is checked with the standard's vectors.
#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <random>
#include <span>
#include <string>
#include <vector>

#include "tests/engine_coder.h"
#include "tests/likeness.h"
#include "tests/test_files.h"

namespace Quorvex {
namespace {

using tests::Correlation;
using tests::Level;

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
  decoder(Noise(20), true);
  EXPECT_LT(Level(decoder(Noise(20), true)), before / 10);
}

struct Encoder {
  Frames operator()(const Samples& samples) const {
    Frames frames(samples.size() / kFrame);
    for (std::size_t i = 0; i < frames.size(); ++i) {
      std::size_t bytes = 0;
      EXPECT_EQ(coder.Encode(&samples[i * kFrame], frames[i].data(), bytes), EngineStatus::kOk);
      EXPECT_EQ(bytes, frames[i].size());
    }
    return frames;
  }

  unsigned char fill = 0xA5;
  const tests::EngineCoder coder{
      Engine(), {.direction = EngineDirection::kEncode, .modes = {.bitRate = 8000}}, fill};
};

// The caller.
Samples Speech() {
  const Samples words = tests::ReadSamples(std::string(MEDIA_ACCESSOR_RECORDINGS) + "/call.wav");
  Samples samples;
  for (std::size_t i = 22; i < words.size(); i += 2) samples.push_back(words[i]);
  return samples;
}

TEST(G729A, BeginsAnewWhateverWasInItsMemory) {
  const Encoder encoder{0x00};
  const Frames frames = encoder(Speech());
  const Decoder decoder{0x00};
  const Samples decoded = decoder(frames);
  EXPECT_EQ(Encoder{0xFF}(Speech()), frames);
  EXPECT_EQ(Decoder{0xFF}(frames), decoded);
  for (EngineHandle* const handle : {encoder.coder.Handle(), decoder.coder.Handle()}) {
    EXPECT_EQ(Engine().Reinitialize({.bitRate = 8000}, handle), EngineStatus::kOk);
  }
  EXPECT_EQ(encoder(Speech()), frames);
  EXPECT_EQ(decoder(frames), decoded);
}

// The encoder looks 40 samples ahead. The codec keeps what one hears, not the waveform.
TEST(G729A, SpeechThereAndBack) {
  const Samples speech = Speech();
  const Samples decoded = Decoder()(Encoder()(speech));
  EXPECT_NEAR(Level(decoded) / Level(speech), 0.9, 0.1);
  const double best = Correlation(speech, decoded, 40);
  EXPECT_GT(best, 0.8);
  for (const std::size_t delay : {38U, 39U, 41U, 42U}) {
    EXPECT_LT(Correlation(speech, decoded, delay), best) << delay;
  }
}

// The filter of the input takes away what does not change.
TEST(G729A, ExtremesThereAndBack) {
  const struct {
    int low, high;  // three samples of each in turn
    double least, most;
  } cases[] = {{0, 0, 0, 2}, {-32768, -32768, 0, 2}, {-32768, 32767, 20000, 32768}};
  for (const auto& c : cases) {
    Samples samples(100 * kFrame);
    for (std::size_t i = 0; i < samples.size(); ++i) {
      samples[i] = static_cast<short>(i / 3 % 2 == 0 ? c.high : c.low);
    }
    const Samples decoded = Decoder()(Encoder()(samples));
    const double level = Level(std::span(decoded).last(decoded.size() / 2));
    EXPECT_GE(level, c.least) << c.low;
    EXPECT_LE(level, c.most) << c.low;
  }
}

}  // namespace
}  // namespace Quorvex
