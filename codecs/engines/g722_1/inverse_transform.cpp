// The fast algorithm splits 320 points into 32 groups of ten and puts them together again:
//
//     coefficients   320 -> 2 x 160 -> 4 x 80 -> .. -> 32 x 10    sums and differences
//                                                      32 x 10    ten-point DCT-IV
//     output         320 <- 2 x 160 <- 4 x 80 <- .. <- 32 x 10    rotations
#include "codecs/engines/g722_1/inverse_transform.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdlib>

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g722_1/transform_tables.h"

namespace Quorvex::g722_1 {
namespace {

using fixed_point::Add;
using fixed_point::Long;
using fixed_point::MultiplyAdd;
using fixed_point::Round;
using fixed_point::Saturate;
using fixed_point::ShiftRight;
using fixed_point::Subtract;
using fixed_point::Word;

constexpr std::size_t kSize = kFrameSamples;
constexpr int kMostExact = 65500;

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

// Turns the mirrored columns round.
Rows Upright(const Rows& rows) noexcept {
  static constexpr auto kMask = [] {
    Row mask{};
    for (std::size_t i = 0; i < kColumns; ++i) mask[i] = IsMirrored(i) ? -1 : 0;
    return mask;
  }();
  Rows result;
  for (std::size_t r = 0; r < kRows; ++r) {
    for (std::size_t i = 0; i < kColumns; ++i) {
      const int other = rows[kRows - 1 - r][i];
      result[r][i] = static_cast<Word>((rows[r][i] & ~kMask[i]) | (other & kMask[i]));
    }
  }
  return result;
}

// One output of every core.
template <bool kSaturates>
Row Core(const Rows& in, std::size_t k) noexcept {
  std::array<Long, kColumns> sums{};
  for (std::size_t r = 0; r < kRows; ++r) {
    const Word factor = kCore[r][k];
    for (std::size_t i = 0; i < kColumns; ++i) {
      sums[i] =
          kSaturates ? MultiplyAdd(sums[i], in[r][i], factor) : sums[i] + Long{in[r][i]} * factor;
    }
  }
  Row out;
  for (std::size_t i = 0; i < kColumns; ++i) {
    out[i] = kSaturates ? Round(sums[i]) : static_cast<Word>((sums[i] + 0x4000) >> 15);
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
void SplitAndTransform(const Samples& coefficients, Samples& out) noexcept {
  const Rows rows = Upright(SplitIntoCores<kSaturates>(coefficients));
  for (std::size_t k = 0; k < kRows; ++k) {
    const Row outputs = Core<kSaturates>(rows, k);
    for (std::size_t i = 0; i < kColumns; ++i) out[kPlaceOfColumn[i] + k] = outputs[i];
  }
}

// A rotation of a pair with the sine's sign at even places and its opposite at odd ones.
template <std::size_t kPlaces>
struct Reflection {
  std::array<Word, kPlaces> aToFront, bToFront, aToBack, bToBack;
};

template <std::size_t kPlaces>
constexpr Reflection<kPlaces> Alternate(const Rotation<kPlaces>& rotation) noexcept {
  Reflection<kPlaces> result{};
  for (std::size_t i = 0; i < kPlaces; ++i) {
    const int sign = i % 2 == 0 ? 1 : -1;
    result.aToFront[i] = rotation.cosine[i];
    result.bToFront[i] = static_cast<Word>(-sign * rotation.minusSine[i]);
    result.aToBack[i] = rotation.minusSine[i];
    result.bToBack[i] = static_cast<Word>(sign * rotation.cosine[i]);
  }
  return result;
}

// Two halves that follow each other become one group, mirrored about its middle.
//
// Cosine and sine together are at most 26060, so two products stay below 2^30 and only the shift of
// their doubled sum can saturate, which is the same as saturating in the end.
template <std::size_t kPlaces, const Rotation<kPlaces>& kRotation>
void Rotate(const Samples& in, Samples& out) noexcept {
  static constexpr Reflection<kPlaces> kBy = Alternate(kRotation);
  for (std::size_t first = 0; first < kSize; first += 2 * kPlaces) {
    for (std::size_t i = 0; i < kPlaces; ++i) {
      const Long a = in[first + i];
      const Long b = in[first + kPlaces + i];
      const Long front = kBy.aToFront[i] * a + kBy.bToFront[i] * b;
      const Long back = kBy.aToBack[i] * a + kBy.bToBack[i] * b;
      out[first + i] = Saturate((front + 0x2000) >> 14);
      out[first + 2 * kPlaces - 1 - i] = Saturate((back + 0x2000) >> 14);
    }
  }
}

}  // namespace

void InverseTransform(const Spectrum& spectrum, Samples& output) noexcept {
  Samples a;
  Samples b;
  int magnitudes = 0;
  for (const Word coefficient : spectrum.coefficients) magnitudes += std::abs(coefficient);
  if (magnitudes <= kMostExact) {
    SplitAndTransform<false>(spectrum.coefficients, a);
  } else {
    SplitAndTransform<true>(spectrum.coefficients, a);
  }
  Rotate<10, kRotation10>(a, b);
  Rotate<20, kRotation20>(b, a);
  Rotate<40, kRotation40>(a, b);
  Rotate<80, kRotation80>(b, a);
  Rotate<160, kRotation160>(a, b);
  for (std::size_t i = 0; i < kSize; ++i) {
    output[i] = ShiftRight(Add(b[i], kBias[i]), spectrum.magnitudeShift);
  }
}

}  // namespace Quorvex::g722_1
