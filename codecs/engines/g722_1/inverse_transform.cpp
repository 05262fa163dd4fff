// The fast algorithm splits 320 points into 32 groups of ten and puts them together again:
//
//     coefficients   320 -> 2 x 160 -> 4 x 80 -> .. -> 32 x 10    sums and differences
//                                                      32 x 10    ten-point DCT-IV
//     output         320 <- 2 x 160 <- 4 x 80 <- .. <- 32 x 10    rotations
#include "codecs/engines/g722_1/inverse_transform.h"

#include <array>
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
constexpr std::size_t kCoreSize = 10;

// Sums of neighbours to the front, differences to the back. Halving keeps them in range.
void FirstSumsAndDifferences(const Samples& in, Samples& out) noexcept {
  for (std::size_t i = 0; i < kSize / 2; ++i) {
    const Long x = in[2 * i];
    const Long y = in[2 * i + 1];
    out[i] = static_cast<Word>((x + kDither[2 * i] + y) >> 1);
    out[kSize - 1 - i] = static_cast<Word>((x + kDither[2 * i + 1] - y) >> 1);
  }
}

// The same in groups.
template <std::size_t kGroup>
void SumsAndDifferences(const Samples& in, Samples& out) noexcept {
  for (std::size_t first = 0; first < kSize; first += kGroup) {
    for (std::size_t i = 0; i < kGroup / 2; ++i) {
      const Word x = in[first + 2 * i];
      const Word y = in[first + 2 * i + 1];
      out[first + i] = Add(x, y);
      out[first + kGroup - 1 - i] = Subtract(x, y);
    }
  }
}

// The sum saturates after each product.
void SaturatingCore(const Word* in, Word* out) noexcept {
  for (std::size_t k = 0; k < kCoreSize; ++k) {
    Long sum = 0;
    for (std::size_t i = 0; i < kCoreSize; ++i) sum = MultiplyAdd(sum, in[i], kCore[i][k]);
    out[k] = Round(sum);
  }
}

void Core(const Word* in, Word* out) noexcept {
  // No entry is above 29400, so no sum of doubled products, and 0x8000 for rounding, gets past 31
  // bits.
  constexpr Long kMostMagnitudes = (0x7FFFFFFF - 0x8000) / (2 * 29400);
  Long magnitudes = 0;
  for (std::size_t i = 0; i < kCoreSize; ++i) magnitudes += std::abs(Long{in[i]});
  if (magnitudes > kMostMagnitudes) return SaturatingCore(in, out);
  std::array<Long, kCoreSize> sums{};
  for (std::size_t i = 0; i < kCoreSize; ++i) {
    for (std::size_t k = 0; k < kCoreSize; ++k) sums[k] += Long{in[i]} * kCore[i][k];
  }
  for (std::size_t k = 0; k < kCoreSize; ++k) out[k] = static_cast<Word>((sums[k] + 0x4000) >> 15);
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
  Samples other;
  FirstSumsAndDifferences(spectrum.coefficients, output);
  SumsAndDifferences<160>(output, other);
  SumsAndDifferences<80>(other, output);
  SumsAndDifferences<40>(output, other);
  SumsAndDifferences<20>(other, output);
  for (std::size_t i = 0; i < kSize; i += kCoreSize) Core(&output[i], &other[i]);
  Rotate<10, kRotation10>(other, output);
  Rotate<20, kRotation20>(output, other);
  Rotate<40, kRotation40>(other, output);
  Rotate<80, kRotation80>(output, other);
  Rotate<160, kRotation160>(other, output);
  for (std::size_t i = 0; i < kSize; ++i) {
    output[i] = ShiftRight(Add(output[i], kBias[i]), spectrum.magnitudeShift);
  }
}

}  // namespace Quorvex::g722_1
