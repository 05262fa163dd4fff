// The standard's sums saturate at every step. Where the sizes of the operands show that none can,
// the steps are plain ones, of which several run at a time.
#include "codecs/engines/g729a/correlation.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "codecs/engines/sums_of_products.h"

namespace Quorvex::g729a {

using namespace fixed_point;

namespace {

using LongSubframe = std::array<Long, kSubframeSamples>;

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

// What a response from each place on has in common with the target.
LongSubframe BackwardSums(const Subframe& target, const Subframe& response) noexcept {
  LongSubframe sums = {};
  const std::int64_t weights = SumOfMagnitudes(response.data(), kSubframeSamples);
  if (weights * Peak(target.data(), kSubframeSamples) < kSumLimit) {
    for (std::size_t k = 0; k < kSubframeSamples; ++k) {
      for (std::size_t i = 0; i + k < kSubframeSamples; ++i) {
        sums[i] += 2 * target[i + k] * response[k];
      }
    }
    return sums;
  }
  for (std::size_t k = 0; k < kSubframeSamples; ++k) {
    for (std::size_t i = 0; i + k < kSubframeSamples; ++i) {
      sums[i] = MultiplyAdd(sums[i], target[i + k], response[k]);
    }
  }
  return sums;
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

Subframe FilterBackward(const Subframe& target, const Subframe& response) noexcept {
  const LongSubframe sums = BackwardSums(target, response);
  Long peak = 0;
  for (const Long sum : sums) peak = std::max(peak, LongAbsolute(sum));
  const int shift = 18 - std::min(16, LongNorm(peak));
  Subframe backward;
  std::ranges::transform(sums, backward.begin(), [shift](Long sum) { return Low(sum >> shift); });
  return backward;
}

}  // namespace Quorvex::g729a
