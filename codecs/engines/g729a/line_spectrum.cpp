#include "codecs/engines/g729a/line_spectrum.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "codecs/engines/g729a/line_spectrum_tables.h"
#include "codecs/engines/g729a/split.h"

namespace Quorvex::g729a {

using namespace fixed_point;

namespace {

constexpr std::size_t kHalfOrder = kOrder / 2;

/// Half of a symmetric polynomial, Q24.
using Polynomial = std::array<Long, kHalfOrder + 1>;

// The product of 1 - 2 x / z + 1 / z^2 over every second of the cosines x.
Polynomial ProductOf(const LineSpectrum& cosines, std::size_t first) noexcept {
  Polynomial f{1 << 24, MultiplySubtract(0, cosines[first], 512)};
  for (std::size_t i = 2; i <= kHalfOrder; ++i) {
    const Word x = cosines[first + 2 * (i - 1)];
    f[i] = f[i - 2];
    for (std::size_t j = i; j >= 2; --j) {
      const Long twice = LongShiftLeft(SplitMultiply(SplitUp(f[j - 1]), x), 1);
      f[j] = LongSubtract(LongAdd(f[j], f[j - 2]), twice);
    }
    f[1] = MultiplySubtract(f[1], x, 512);
  }
  return f;
}

Word Coefficient(Long sum) noexcept { return Low(LongShiftRightRounded(sum, 13)); }

}  // namespace

LineSpectrum CosinesOf(const LineSpectrum& frequencies) noexcept {
  LineSpectrum cosines;
  for (std::size_t i = 0; i < kOrder; ++i) {
    // From radians to 256 steps between two points of the table: 64 / pi.
    const int place = Multiply(frequencies[i], 20861);
    const auto point = static_cast<std::size_t>(std::clamp(place >> 8, 0, 63));
    const Long slope = LongMultiply(kCosineSlopes[point], static_cast<Word>(place & 0xFF));
    cosines[i] = Add(kCosines[point], Low(slope >> 13));
  }
  return cosines;
}

Filter FilterOf(const LineSpectrum& cosines) noexcept {
  Polynomial sum = ProductOf(cosines, 0);
  Polynomial difference = ProductOf(cosines, 1);
  for (std::size_t i = kHalfOrder; i > 0; --i) {
    sum[i] = LongAdd(sum[i], sum[i - 1]);
    difference[i] = LongSubtract(difference[i], difference[i - 1]);
  }
  Filter filter;
  filter[0] = 4096;
  for (std::size_t i = 1; i <= kHalfOrder; ++i) {
    filter[i] = Coefficient(LongAdd(sum[i], difference[i]));
    filter[kOrder + 1 - i] = Coefficient(LongSubtract(sum[i], difference[i]));
  }
  return filter;
}

LineSpectrum Between(const LineSpectrum& before, const LineSpectrum& now) noexcept {
  LineSpectrum mean;
  for (std::size_t i = 0; i < kOrder; ++i) {
    mean[i] = static_cast<Word>((now[i] >> 1) + (before[i] >> 1));
  }
  return mean;
}

}  // namespace Quorvex::g729a
