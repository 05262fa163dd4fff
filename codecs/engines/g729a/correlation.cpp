// The standard's sums saturate at every step. Where the sizes of the operands show that none can,
// the steps are plain ones, of which several run at a time.
#include "codecs/engines/g729a/correlation.h"

#include <cstddef>
#include <cstdint>

#include "codecs/engines/sums_of_products.h"

namespace Quorvex::g729a {

using namespace fixed_point;

namespace {

Sum CorrelateSaturating(const Word* a, const Word* b, Long start) noexcept {
  Sum sum{.value = start};
  for (std::size_t i = 0; i < kSubframeSamples; ++i) {
    const std::int64_t product = std::int64_t{a[i]} * b[i] * 2;
    const std::int64_t next = sum.value + std::int64_t{SaturateLong(product)};
    sum.value = SaturateLong(next);
    sum.saturated = sum.saturated || sum.value != next || product > kMostLong;
  }
  return sum;
}

}  // namespace

Correlator::Correlator(const Subframe& samples) noexcept
    : samples_(samples), sumOfMagnitudes_(SumOfMagnitudes(samples.data(), kSubframeSamples)) {}

Sum Correlator::With(const Word* others, Long start) const noexcept {
  const std::int64_t most = std::int64_t{sumOfMagnitudes_} * Peak(others, kSubframeSamples);
  if (most + start >= kSumLimit) return CorrelateSaturating(samples_.data(), others, start);
  return {.value = start + 2 * CorrelateUndoubled(samples_.data(), others, kSubframeSamples)};
}

Scaled Normalize(Long sum) noexcept {
  const int norm = LongNorm(sum);
  return {Round(LongShiftLeft(sum, norm)), norm};
}

}  // namespace Quorvex::g729a
