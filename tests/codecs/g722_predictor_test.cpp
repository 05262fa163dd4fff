// The predictors of G.722: the vector variants give what the plain ones give.
#include <gtest/gtest.h>

#include <random>

#include "codecs/engines/g722/adaptive_predictor.h"

namespace Quorvex::g722 {
namespace {

constexpr std::size_t kCount = 80;
using Numbers = std::array<Word, 2 * kCount>;  // of both bands

TEST(G722Predictor, VectorEqualsPlain) {
  const struct {
    int most;         // difference
    unsigned change;  // of sign, once in so many on the average: the fewer, the larger the zeros
  } cases[] = {{0, 1}, {1, 2}, {300, 2}, {2000, 1000}, {10228, 2}, {10228, 1000}};
  std::minstd_rand random(1);
  for (const auto& test : cases) {
    AdaptivePredictor plain[2], vector[2];
    for (int sign = 1, frame = 0; frame < 200; ++frame) {
      Numbers differences, plainParts, parts, plainPredictions, predictions;
      for (Word& difference : differences) {
        if ((random() >> 8) % test.change == 0) sign = -sign;
        const int value = static_cast<int>(random() >> 4) % (test.most + 1);
        const int size = (random() >> 8) % 2 == 0 ? test.most : value;
        difference = static_cast<Word>(sign * size);
      }
      for (std::size_t band : {0U, 1U}) {
        AdaptZerosPlain(plain[band].zeros, &differences[band], kCount, &plainParts[band]);
        AdaptZeros(vector[band].zeros, &differences[band], kCount, &parts[band]);
      }
      ASSERT_EQ(parts, plainParts) << test.most << ", " << test.change;
      PredictPlain(plain[0].poles, plain[1].poles, differences.data(), parts.data(), kCount,
                   plainPredictions.data());
      Predict(vector[0].poles, vector[1].poles, differences.data(), parts.data(), kCount,
              predictions.data());
      ASSERT_EQ(predictions, plainPredictions) << test.most << ", " << test.change;
    }
  }
}

}  // namespace
}  // namespace Quorvex::g722
