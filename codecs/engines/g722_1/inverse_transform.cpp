// The fast algorithm splits 320 points into 32 groups of ten and puts them together again:
//
//     coefficients   320 -> 2 x 160 -> 4 x 80 -> .. -> 32 x 10    sums and differences
//                                                      32 x 10    ten-point DCT-IV
//     output         320 <- 2 x 160 <- 4 x 80 <- .. <- 32 x 10    rotations
//
// Each step goes from one array to another. The back half of a group stands in mirrored order.
#include "codecs/engines/g722_1/inverse_transform.h"

#include <algorithm>
#include <cstddef>

#include "codecs/engines/g722_1/transform_tables.h"

namespace Quorvex::g722_1 {
namespace {

using fixed_point::Long;
using fixed_point::MultiplyAdd;
using fixed_point::Round;
using fixed_point::Saturate;
using fixed_point::Word;

constexpr std::size_t kCoreSize = 10;

// Halving keeps the first split in range.
Samples FirstSplit(const Samples& in) noexcept {
  Samples out;
  for (std::size_t i = 0; i < in.size() / 2; ++i) {
    const int x = in[2 * i];
    const int y = in[2 * i + 1];
    out[i] = static_cast<Word>((x + y + kDither[2 * i]) >> 1);
    out[in.size() - 1 - i] = static_cast<Word>((x - y + kDither[2 * i + 1]) >> 1);
  }
  return out;
}

// Splits groups of a size.
Samples Split(const Samples& in, std::size_t size) noexcept {
  Samples out;
  for (std::size_t first = 0; first < in.size(); first += size) {
    for (std::size_t i = 0; i < size / 2; ++i) {
      const int x = in[first + 2 * i];
      const int y = in[first + 2 * i + 1];
      out[first + i] = Saturate(x + y);
      out[first + size - 1 - i] = Saturate(x - y);
    }
  }
  return out;
}

// The sum saturates after each product, so that their order matters.
Samples TransformCores(const Samples& in) noexcept {
  Samples out;
  for (std::size_t first = 0; first < in.size(); first += kCoreSize) {
    for (std::size_t k = 0; k < kCoreSize; ++k) {
      Long sum = 0;
      for (std::size_t i = 0; i < kCoreSize; ++i) {
        sum = MultiplyAdd(sum, in[first + i], kCore[i][k]);
      }
      out[first + k] = Round(sum);
    }
  }
  return out;
}

// Makes groups of twice the size. Cosine and sine together are at most 26060, so two products stay
// below 2^30 and only the shift of their doubled sum can saturate, which is the same as saturating
// in the end. At odd places the sine changes its sign.
template <std::size_t kSize>
Samples Rotate(const Samples& in, const Rotation<kSize>& by) noexcept {
  Samples out;
  for (std::size_t first = 0; first < in.size(); first += 2 * kSize) {
    for (std::size_t i = 0; i < kSize; ++i) {
      const Long a = in[first + i];
      const Long b = (i % 2 == 0 ? 1 : -1) * in[first + kSize + i];
      const Long front = by.cosine[i] * a - by.minusSine[i] * b;
      const Long back = by.minusSine[i] * a + by.cosine[i] * b;
      out[first + i] = Saturate((front + 0x2000) >> 14);
      out[first + 2 * kSize - 1 - i] = Saturate((back + 0x2000) >> 14);
    }
  }
  return out;
}

}  // namespace

void InverseTransform(const Spectrum& spectrum, Samples& output) noexcept {
  if (!InverseTransformVector(spectrum.coefficients.data(), spectrum.magnitudeShift,
                              output.data())) {
    InverseTransformPlain(spectrum, output);
  }
}

void InverseTransformPlain(const Spectrum& spectrum, Samples& output) noexcept {
  Samples samples = FirstSplit(spectrum.coefficients);
  for (std::size_t size = kFrameSamples / 2; size > kCoreSize; size /= 2) {
    samples = Split(samples, size);
  }
  samples = TransformCores(samples);
  samples = Rotate(samples, kRotation10);
  samples = Rotate(samples, kRotation20);
  samples = Rotate(samples, kRotation40);
  samples = Rotate(samples, kRotation80);
  samples = Rotate(samples, kRotation160);
  const int left = std::max(-spectrum.magnitudeShift, 0);
  const int right = std::max(spectrum.magnitudeShift, 0);
  for (std::size_t i = 0; i < kFrameSamples; ++i) {
    output[i] = static_cast<Word>(Saturate((samples[i] + kBias[i]) << left) >> right);
  }
}

}  // namespace Quorvex::g722_1
