// The vector variant of the block filter does what the plain one does; and the bounds by which the
// engines choose plain sums hold.
#include "codecs/engines/block_filter.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <iterator>
#include <random>

#include "codecs/engines/sums_of_products.h"

namespace Quorvex::fixed_point {
namespace {

TEST(BlockFilter, VectorVariantIsThePlainOne) {
  std::minstd_rand random(1);
  for (const std::size_t taps : {1U, 2U, 11U, 20U}) {
    // The largest samples of which no sum reaches 2^30.
    const int most = static_cast<int>(32767 / taps);
    std::uniform_int_distribution<int> sample(-most, most), tap(-32768, 32767);
    std::array<Word, 20> coefficients;
    std::array<Word, 20 + 40> samples;
    for (Word& value : coefficients) value = static_cast<Word>(tap(random));
    for (Word& value : samples) value = static_cast<Word>(sample(random));
    for (const int shift : {1, 12, 15}) {
      std::array<Word, 40> filtered, plain;
      FilterBlocks(&samples[20], coefficients.data(), taps, shift, filtered.size(),
                   filtered.data());
      FilterBlocksPlain(&samples[20], coefficients.data(), taps, shift, plain.size(), plain.data());
      EXPECT_EQ(filtered, plain) << taps << " taps, shift " << shift;
    }
  }
}

TEST(SumsOfProducts, BoundsHold) {
  const Word values[] = {0, 1, -1, 2, 255, -256, 16384, -16385, 32767, -32768};
  for (const Word value : values) {
    EXPECT_GE(Peak(&value, 1), std::abs(Long{value})) << value;
    EXPECT_LE(Peak(&value, 1), 32768) << value;
  }
  EXPECT_EQ(SumOfMagnitudes(values, std::size(values)),
            0 + 1 + 1 + 2 + 255 + 256 + 16384 + 16385 + 32767 + 32768);
  // Just below the limit nothing saturates; a step further it does.
  const Word below[] = {32767, 181};
  const Word at[] = {-32768, 0};
  EXPECT_EQ(Correlate(below, below, 2), 2 * CorrelateUndoubled(below, below, 2));
  EXPECT_EQ(CorrelateUndoubled(at, at, 2), kSumLimit);
  EXPECT_EQ(Correlate(at, at, 2), kMostLong);
}

}  // namespace
}  // namespace Quorvex::fixed_point
