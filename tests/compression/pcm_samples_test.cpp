// The conversion of many samples at once, for which there are vector instructions, against that of
// each alone, and both against what is defined.
#include "compression/posix/pcm_samples.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <random>
#include <vector>

namespace {

using namespace Quorvex;

using Convert = void (*)(const unsigned char* input, std::size_t count, short* samples);

struct FloatCase {
  float value;
  short sample;
};

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kStep = 1.0F / 32'768;
// A half goes to the even neighbour.
constexpr FloatCase kFloats[] = {{std::numeric_limits<float>::quiet_NaN(), 0},
                                 {kInfinity, 32'767},
                                 {-kInfinity, -32'768},
                                 {1e30F, 32'767},
                                 {-1e30F, -32'768},
                                 {1.0F, 32'767},
                                 {-1.0F, -32'768},
                                 {32'766.5F * kStep, 32'766},
                                 {32'767.5F * kStep, 32'767},
                                 {0.5F * kStep, 0},
                                 {1.5F * kStep, 2},
                                 {-0.5F * kStep, 0},
                                 {-1.5F * kStep, -2},
                                 {2.5F * kStep, 2},
                                 {-32'767.5F * kStep, -32'768},
                                 {-0.0F, 0}};

std::vector<short> AllAtOnce(Convert convert, const std::vector<unsigned char>& input,
                             std::size_t width) {
  std::vector<short> samples(input.size() / width);
  convert(input.data(), samples.size(), samples.data());
  return samples;
}

std::vector<short> OneByOne(Convert convert, const std::vector<unsigned char>& input,
                            std::size_t width) {
  std::vector<short> samples(input.size() / width);
  for (std::size_t i = 0; i < samples.size(); ++i) convert(&input[i * width], 1, &samples[i]);
  return samples;
}

TEST(PCMSamples, VectorsGiveWhatSingleSamplesGive) {
  // Exponents of every size come up; with it each special value in each lane.
  constexpr std::size_t kCount = 100'003;
  std::minstd_rand random(1);
  std::vector<unsigned char> bytes(kCount * 4);
  for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(random() >> 8);
  EXPECT_EQ(AllAtOnce(ConvertIntegers<3>, bytes, 3), OneByOne(ConvertIntegers<3>, bytes, 3));
  for (std::size_t i = 0; i < kCount; i += 5) {
    const float value =
        i % 2 == 0 ? kFloats[i / 10 % std::size(kFloats)].value
                   : static_cast<float>(static_cast<int>(random() % 140'000) - 70'000) / 65'536;
    std::memcpy(&bytes[i * sizeof value], &value, sizeof value);
  }
  const auto expected = OneByOne(ConvertFloats<float>, bytes, 4);
  EXPECT_EQ(AllAtOnce(ConvertFloats<float>, bytes, 4), expected);
  // The narrower vectors, which the wider ones otherwise leave little to do.
  std::vector<short> narrow(expected);
  const std::size_t done = ConvertFloatsVector(bytes.data(), kCount, narrow.data());
  EXPECT_EQ(narrow, expected) << done;
}

TEST(PCMSamples, SpecialFloats) {
  for (const FloatCase& c : kFloats) {
    unsigned char bytes[sizeof c.value];
    std::memcpy(bytes, &c.value, sizeof bytes);
    short sample = 1;
    ConvertFloats<float>(bytes, 1, &sample);
    EXPECT_EQ(sample, c.sample) << c.value / kStep;
  }
}

}  // namespace
