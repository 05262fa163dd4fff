// The faster ways of AU conversion against double-precision arithmetic as it is defined.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "formats/au/au_samples.h"

namespace {

using namespace Quorvex;

short Defined(double value, int channels) {
  double scaled = value * (1.0 / channels);
  if (std::isnan(scaled)) return 0;
  if (scaled > 0) scaled += 0.5;
  if (scaled < 0) scaled -= 0.5;
  if (scaled > 32'767.0) scaled = 32'767.0;
  if (scaled < -32'768.0) scaled = -32'768.0;
  return static_cast<short>(scaled);
}

// Where this arithmetic differs from others that are right as well: half is added before the cut,
// and the reciprocal of the channel count is what is multiplied with.
TEST(AUSamples, RoundingAsItIsDefined) {
  struct Case {
    int channels;
    short value;
    short sample;
  };
  // 49 / 98 is a half, which its reciprocal does not quite reach; adding a half makes up for it.
  // For 147 / 98 nothing does.
  for (const Case& c : {Case{98, 49, 1}, Case{98, 147, 1}, Case{98, -49, -1}, Case{98, -147, -1},
                        Case{2, 3, 2}, Case{2, -3, -2}, Case{8, 4, 1}, Case{8, -4, -1}}) {
    const unsigned char input[] = {static_cast<unsigned char>(c.value >> 8 & 0xFF),
                                   static_cast<unsigned char>(c.value & 0xFF)};
    short sample = 0;
    ConvertAUSamples(AUEncoding::kLinear16, c.channels, input, 1, &sample);
    EXPECT_EQ(sample, c.sample) << c.value << " / " << c.channels;
  }
  // The largest number below a half, 0x3FDFFFFFFFFFFFFF, at the scale of a sample.
  const unsigned char belowHalf[] = {0x3E, 0xEF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
  short sample = 0;
  ConvertAUSamples(AUEncoding::kFloat64, 1, belowHalf, 1, &sample);
  EXPECT_EQ(sample, 1);
}

TEST(AUSamples, EverySixteenBitValueForEveryKindOfChannelCount) {
  std::vector<unsigned char> input;
  for (int value = -32'768; value <= 32'767; ++value) {
    input.push_back(static_cast<unsigned char>(value >> 8 & 0xFF));
    input.push_back(static_cast<unsigned char>(value & 0xFF));
  }
  std::vector<short> samples(65'536);
  for (const int channels : {1, 2, 3, 4, 5, 6, 7, 8, 16, 100, 4096, 8191, 8192}) {
    ConvertAUSamples(AUEncoding::kLinear16, channels, input.data(), samples.size(), samples.data());
    int wrong = 0;
    for (int value = -32'768; value <= 32'767; ++value) {
      wrong += samples[static_cast<std::size_t>(value + 32'768)] != Defined(value, channels);
    }
    EXPECT_EQ(wrong, 0) << channels;
  }
}

// Floats around every place where the rounding turns, and a walk through all their bit patterns.
TEST(AUSamples, FloatsForEveryKindOfChannelCount) {
  std::vector<float> values;
  for (int half = -65'600; half <= 65'600; ++half) {
    const float turn = static_cast<float>(half) / 65'536.0F;
    for (const float channels : {1.0F, 2.0F, 3.0F, 8.0F}) {
      const float value = turn * channels;
      values.insert(values.end(),
                    {std::nextafterf(value, -100.0F), value, std::nextafterf(value, 100.0F)});
    }
  }
  for (std::uint64_t bits = 0; bits <= 0xFFFFFFFFU; bits += 9973) {
    values.push_back(std::bit_cast<float>(static_cast<std::uint32_t>(bits)));
  }
  std::vector<unsigned char> input;
  for (const float value : values) {
    const auto bits = std::bit_cast<std::uint32_t>(value);
    for (int shift = 24; shift >= 0; shift -= 8) {
      input.push_back(static_cast<unsigned char>(bits >> shift & 0xFF));
    }
  }
  std::vector<short> samples(values.size());
  for (const int channels : {1, 2, 3, 8, 4096}) {
    ConvertAUSamples(AUEncoding::kFloat32, channels, input.data(), samples.size(), samples.data());
    int wrong = 0;
    for (std::size_t i = 0; i < values.size(); ++i) {
      wrong += samples[i] != Defined(values[i] * 32'768.0, channels);
    }
    EXPECT_EQ(wrong, 0) << channels;
  }
}

}  // namespace
