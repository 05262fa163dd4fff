// The loops of G.722.1: the vector variants give what the plain ones give.
#include <gtest/gtest.h>

#include <random>

#include "codecs/engines/g722_1/inverse_transform.h"
#include "codecs/engines/g722_1/overlap.h"

namespace Quorvex::g722_1 {
namespace {

TEST(G7221Vectors, TransformEqualsPlain) {
  const struct {
    int most;        // magnitude, which every other coefficient has
    unsigned apart;  // coefficients that are not zero, on the average
  } cases[] = {{50, 1}, {265, 1}, {16000, 80}, {16000, 1}};  // the last one saturates
  std::minstd_rand random(1);
  for (const auto& test : cases) {
    for (int shift = -1; shift <= 9; ++shift) {
      Spectrum spectrum{.magnitudeShift = shift};
      for (auto& coefficient : spectrum.coefficients) {
        if (random() % test.apart != 0) continue;
        const int value = static_cast<int>(random() >> 4) % (test.most + 1);
        const int size = random() % 1024 < 512 ? test.most : value;
        coefficient = static_cast<short>(random() % 1024 < 512 ? size : -size);
      }
      Samples plain, output;
      InverseTransformPlain(spectrum, plain);
      InverseTransform(spectrum, output);
      EXPECT_EQ(output, plain) << test.most << ", " << test.apart << ", shift " << shift;
    }
  }
}

TEST(G7221Vectors, OverlapEqualsPlain) {
  std::minstd_rand random(1);
  Samples words;
  for (int round = 0; round < 50; ++round) {
    for (auto& word : words) {
      word = random() % 3 == 0 ? short{-32768} : static_cast<short>(random() >> 8);
    }
    Samples plain, output;
    WeighHalvesPlain(words.data(), words.data() + kHalfFrame, plain.data());
    WeighHalves(words.data(), words.data() + kHalfFrame, output.data());
    EXPECT_EQ(output, plain);
  }
}

}  // namespace
}  // namespace Quorvex::g722_1
