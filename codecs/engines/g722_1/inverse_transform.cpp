// The fast algorithm splits 320 points into 32 groups of ten and puts them together again:
//
//     coefficients   320 -> 2 x 160 -> 4 x 80 -> .. -> 32 x 10    sums and differences
//                                                      32 x 10    ten-point DCT-IV
//     output         320 <- 2 x 160 <- 4 x 80 <- .. <- 32 x 10    rotations
#include "codecs/engines/g722_1/inverse_transform.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdlib>

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g722_1/transform_tables.h"

namespace Quorvex::g722_1 {
namespace {

using fixed_point::Long;
using fixed_point::MultiplyAdd;
using fixed_point::Round;
using fixed_point::Saturate;
using fixed_point::Word;

// What the first stages make of 32 neighbours does not depend on the others: row r of the ten
// cores' input comes of coefficients 32 r to 32 r + 31. So the stages work on rows, with a core a
// column: after s stages an index in a row is s bits that say, the last stage on top, where each
// stage put the value, front or back, and 5 - s bits of place among the coefficients.
constexpr std::size_t kRows = 10;
constexpr std::size_t kColumns = 32;
using Row = std::array<Word, kColumns>;
using Rows = std::array<Row, kRows>;

// The back takes values in mirrored order, so a value that went there an odd number of times stands
// in its group as if the group were turned round.
constexpr bool IsMirrored(std::size_t stagesToTheBack) noexcept {
  return std::popcount(stagesToTheBack) % 2 != 0;
}

// By pair of the stage that so many came before: -1 where its values stand the other way round.
template <std::size_t kStage>
constexpr auto kMirrored = [] {
  std::array<Word, kColumns / 2> result{};
  for (std::size_t pair = 0; pair < result.size(); ++pair) {
    result[pair] = IsMirrored(pair >> (4 - kStage)) ? -1 : 0;
  }
  return result;
}();

// Halving keeps the first stage in range.
void FirstSumsAndDifferences(const Word* in, const Word* dither, Row& out) noexcept {
  for (std::size_t i = 0; i < kColumns / 2; ++i) {
    const int x = in[2 * i];
    const int y = in[2 * i + 1];
    out[i] = static_cast<Word>((x + dither[2 * i] + y) >> 1);
    out[kColumns / 2 + i] = static_cast<Word>((x + dither[2 * i + 1] - y) >> 1);
  }
}

template <std::size_t kStage, bool kSaturates>
void SumsAndDifferences(const Row& in, Row& out) noexcept {
  for (std::size_t i = 0; i < kColumns / 2; ++i) {
    const int x = in[2 * i];
    const int y = in[2 * i + 1];
    const int sum = x + y;
    const int mirrored = kMirrored<kStage>[i];
    const int difference = ((x - y) ^ mirrored) - mirrored;
    out[i] = kSaturates ? Saturate(sum) : static_cast<Word>(sum);
    out[kColumns / 2 + i] = kSaturates ? Saturate(difference) : static_cast<Word>(difference);
  }
}

template <bool kSaturates>
Rows SplitIntoCores(const Samples& coefficients) noexcept {
  Rows rows;
  for (std::size_t r = 0; r < kRows; ++r) {
    Row even;
    Row odd;
    FirstSumsAndDifferences(&coefficients[r * kColumns], &kDither[r * kColumns], even);
    SumsAndDifferences<1, kSaturates>(even, odd);
    SumsAndDifferences<2, kSaturates>(odd, even);
    SumsAndDifferences<3, kSaturates>(even, odd);
    SumsAndDifferences<4, kSaturates>(odd, rows[r]);
  }
  return rows;
}

// kCore by output, row and column. A column that is mirrored meets its inputs from the last on.
constexpr auto kFactors = [] {
  std::array<Rows, kRows> result{};
  for (std::size_t k = 0; k < kRows; ++k) {
    for (std::size_t r = 0; r < kRows; ++r) {
      for (std::size_t i = 0; i < kColumns; ++i) {
        result[k][r][i] = kCore[IsMirrored(i) ? kRows - 1 - r : r][k];
      }
    }
  }
  return result;
}();

// One output of every core.
Row Core(const Rows& in, const Rows& factors) noexcept {
  std::array<Long, kColumns> sums{};
  for (std::size_t r = 0; r < kRows; ++r) {
    for (std::size_t i = 0; i < kColumns; ++i) sums[i] += Long{in[r][i]} * factors[r][i];
  }
  Row out;
  for (std::size_t i = 0; i < kColumns; ++i) out[i] = static_cast<Word>((sums[i] + 0x4000) >> 15);
  return out;
}

// The same with sums that saturate after each product, so that their order matters.
Row SaturatingCore(const Rows& in, const Rows& factors) noexcept {
  Row out;
  for (std::size_t i = 0; i < kColumns; ++i) {
    Long sum = 0;
    for (std::size_t n = 0; n < kRows; ++n) {
      const std::size_t r = IsMirrored(i) ? kRows - 1 - n : n;
      sum = MultiplyAdd(sum, in[r][i], factors[r][i]);
    }
    out[i] = Round(sum);
  }
  return out;
}

// Groups of ten follow each other as the rotations take them: by what the first stage did, then the
// second.
constexpr auto kPlaceOfColumn = [] {
  std::array<std::size_t, kColumns> result{};
  for (std::size_t i = 0; i < kColumns; ++i) {
    for (std::size_t bit = 0; bit < 5; ++bit) result[i] |= (i >> bit & 1) << (4 - bit);
    result[i] *= kRows;
  }
  return result;
}();

template <bool kSaturates>
Samples SplitAndTransform(const Samples& coefficients) noexcept {
  const Rows in = SplitIntoCores<kSaturates>(coefficients);
  Rows out;
  for (std::size_t k = 0; k < kRows; ++k) {
    out[k] = kSaturates ? SaturatingCore(in, kFactors[k]) : Core(in, kFactors[k]);
  }
  Samples groups;
  for (std::size_t i = 0; i < kColumns; ++i) {
    for (std::size_t k = 0; k < kRows; ++k) groups[kPlaceOfColumn[i] + k] = out[k][i];
  }
  return groups;
}

// A rotation makes one group of two, its back mirrored. It works in place, so that the back stands
// straight: this is the place in the group of what is at an index.
template <std::size_t kGroup>
constexpr auto kPlaces = [] {
  std::array<std::size_t, kGroup> result{};
  constexpr std::size_t kHalf = kGroup / 2;
  for (std::size_t i = 0; i < kHalf; ++i) {
    result[i] = kPlaces<kHalf>[i];
    result[kHalf + i] = kGroup - 1 - result[i];
  }
  return result;
}();
template <>
constexpr std::array<std::size_t, 10> kPlaces<10> = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9};

// What a group's elements a and b are multiplied by. At odd places the sine changes its sign.
template <std::size_t kSize>
struct Matrices {
  std::array<Word, kSize> aToFront, bToFront, aToBack, bToBack;
};

template <std::size_t kSize>
constexpr Matrices<kSize> InPlace(const Rotation<kSize>& rotation) noexcept {
  Matrices<kSize> result{};
  for (std::size_t i = 0; i < kSize; ++i) {
    const std::size_t place = kPlaces<kSize>[i];
    const int sign = place % 2 == 0 ? 1 : -1;
    result.aToFront[i] = rotation.cosine[place];
    result.bToFront[i] = static_cast<Word>(-sign * rotation.minusSine[place]);
    result.aToBack[i] = rotation.minusSine[place];
    result.bToBack[i] = static_cast<Word>(sign * rotation.cosine[place]);
  }
  return result;
}

// Cosine and sine together are at most 26060, so two products stay below 2^30 and only the shift of
// their doubled sum can saturate, which is the same as saturating in the end.
template <bool kSaturates, std::size_t kSize>
void Rotate(Samples& samples, const Matrices<kSize>& by) noexcept {
  for (std::size_t first = 0; first < samples.size(); first += 2 * kSize) {
    for (std::size_t i = 0; i < kSize; ++i) {
      const Long a = samples[first + i];
      const Long b = samples[first + kSize + i];
      const Long front = (by.aToFront[i] * a + by.bToFront[i] * b + 0x2000) >> 14;
      const Long back = (by.aToBack[i] * a + by.bToBack[i] * b + 0x2000) >> 14;
      samples[first + i] = kSaturates ? Saturate(front) : static_cast<Word>(front);
      samples[first + kSize + i] = kSaturates ? Saturate(back) : static_cast<Word>(back);
    }
  }
}

template <std::size_t kSize, const Rotation<kSize>& kRotation>
void Rotate(Samples& samples, bool saturates) noexcept {
  static constexpr Matrices<kSize> kBy = InPlace(kRotation);
  if (saturates) {
    Rotate<true>(samples, kBy);
  } else {
    Rotate<false>(samples, kBy);
  }
}

void AddBias(const Samples& groups, int magnitudeShift, Samples& output) noexcept {
  static constexpr Samples kBiasInPlace = [] {
    Samples result{};
    for (std::size_t i = 0; i < kFrameSamples; ++i) result[i] = kBias[kPlaces<kFrameSamples>[i]];
    return result;
  }();
  const int left = std::max(-magnitudeShift, 0);
  const int right = std::max(magnitudeShift, 0);
  Samples sums;
  for (std::size_t i = 0; i < kFrameSamples; ++i) {
    sums[i] = static_cast<Word>(Saturate((groups[i] + kBiasInPlace[i]) << left) >> right);
  }
  for (std::size_t i = 0; i < kFrameSamples; ++i) output[kPlaces<kFrameSamples>[i]] = sums[i];
}

}  // namespace

// Whether anything can saturate is known beforehand. With m the sum of all magnitudes, what enters
// the cores is at most m / 2 + 16, the inputs of one core together m / 2 + 160, its outputs
// 0.4487 m + 95. Each rotation multiplies the bound by 1.125, roundings included. So with m up to
//
//     65500   nothing up to the cores saturates
//     64400, 57100, 50600, 44700, 39400   nor do the rotations, from the first to the last.
void InverseTransform(const Spectrum& spectrum, Samples& output) noexcept {
  int magnitudes = 0;
  for (const Word coefficient : spectrum.coefficients) magnitudes += std::abs(coefficient);
  Samples groups = magnitudes > 65500 ? SplitAndTransform<true>(spectrum.coefficients)
                                      : SplitAndTransform<false>(spectrum.coefficients);
  Rotate<10, kRotation10>(groups, magnitudes > 64400);
  Rotate<20, kRotation20>(groups, magnitudes > 57100);
  Rotate<40, kRotation40>(groups, magnitudes > 50600);
  Rotate<80, kRotation80>(groups, magnitudes > 44700);
  Rotate<160, kRotation160>(groups, magnitudes > 39400);
  AddBias(groups, spectrum.magnitudeShift, output);
}

}  // namespace Quorvex::g722_1
