// The zeros of G.722's predictor: the vector variant gives what the plain one gives.
#include "codecs/engines/g722/zero_predictor.h"

#include <gtest/gtest.h>

#include <random>

namespace Quorvex::g722 {
namespace {

TEST(ZeroPredictor, VectorEqualsPlain) {
  const struct {
    int most;         // difference
    unsigned change;  // of sign, once in so many on the average: the fewer, the larger the zeros
  } cases[] = {{0, 1}, {1, 2}, {300, 2}, {2000, 1000}, {10228, 2}, {10228, 1000}};
  std::minstd_rand random(1);
  for (const auto& test : cases) {
    ZeroPredictor plain, vector;
    for (int sign = 1, frame = 0; frame < 100; ++frame) {
      std::array<fixed_point::Word, 80> differences, plainParts, vectorParts;
      for (auto& difference : differences) {
        if ((random() >> 8) % test.change == 0) sign = -sign;
        const int value = static_cast<int>(random() >> 4) % (test.most + 1);
        const int size = (random() >> 8) % 2 == 0 ? test.most : value;
        difference = static_cast<fixed_point::Word>(sign * size);
      }
      AdaptZerosPlain(plain, differences.data(), differences.size(), plainParts.data());
      AdaptZeros(vector, differences.data(), differences.size(), vectorParts.data());
      ASSERT_EQ(vectorParts, plainParts) << test.most << ", " << test.change;
      ASSERT_EQ(vector.zeros, plain.zeros);
    }
  }
}

}  // namespace
}  // namespace Quorvex::g722
