// Sums of products, saturating at every step; and bounds by which a sum is known not to saturate.
// It is then the same in any order, and plain arithmetic does, which compilers make vector
// instructions of.
#pragma once

#include <cstddef>
#include <cstdint>

#include "codecs/engines/fixed_point.h"

namespace Quorvex::fixed_point {

/// No magnitude is larger than this: at most twice the largest, and at most 2^15.
inline Long Peak(const Word* values, std::size_t count) noexcept {
  int bits = 0;
  for (std::size_t i = 0; i < count; ++i) bits |= values[i] ^ (values[i] >> 15);
  return bits + 1;
}

constexpr Long SumOfMagnitudes(const Word* values, std::size_t count) noexcept {
  Long sum = 0;
  for (std::size_t i = 0; i < count; ++i) sum += values[i] < 0 ? -values[i] : values[i];
  return sum;
}

/// Twice the sum of the squares, as a chain of MultiplyAdd has it, but for its limits.
inline std::int64_t ExactEnergy(const Word* values, std::size_t count) noexcept {
  std::int64_t sum = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const Long square = values[i] * values[i];
    sum += square;
  }
  return 2 * sum;
}

/// MultiplyAdd doubles every product and saturates from 2^31 on: undoubled sums that stay below
/// this do not.
inline constexpr Long kSumLimit = 1 << 30;

/// A chain of MultiplyAdd.
inline Long Correlate(const Word* a, const Word* b, std::size_t count, Long start = 0) noexcept {
  Long sum = start;
  for (std::size_t i = 0; i < count; ++i) sum = MultiplyAdd(sum, a[i], b[i]);
  return sum;
}
/// The same where it cannot saturate: half of it, in plain arithmetic.
inline Long CorrelateUndoubled(const Word* a, const Word* b, std::size_t count) noexcept {
  Long sum = 0;
  for (std::size_t i = 0; i < count; ++i) sum += a[i] * b[i];
  return sum;
}

}  // namespace Quorvex::fixed_point
