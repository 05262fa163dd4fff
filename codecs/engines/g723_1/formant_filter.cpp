#include "codecs/engines/g723_1/formant_filter.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "codecs/engines/sums_of_products.h"

namespace Quorvex::g723_1 {

using namespace fixed_point;

namespace {

Filter Weighted(const Filter& filter, const Filter& weights) noexcept {
  Filter weighted;
  std::ranges::transform(filter, weights, weighted.begin(), MultiplyRounded);
  return weighted;
}

// From a sample on.
void FilterSaturating(const FormantFilter& filter, const Word* samples, std::size_t first,
                      FilterSums& sums, Word* filtered) noexcept {
  for (std::size_t n = first; n < kSubframeSamples; ++n) {
    Long sum = Deposit(samples[n]) >> 2;
    for (std::size_t i = 0; i < kOrder; ++i) {
      sum = MultiplySubtract(sum, filter.zeros[i], *(samples + n - 1 - i));
    }
    for (std::size_t i = 0; i < kOrder; ++i) {
      sum = MultiplyAdd(sum, filter.poles[i], *(filtered + n - 1 - i));
    }
    sums[n] = LongShiftLeft(sum, 2) >> 3;
    filtered[n] = SampleOf(sums[n]);
  }
}

}  // namespace

FormantFilter FormantFilterOf(const Filter& filter, const Filter& zeroWeights,
                              const Filter& poleWeights) noexcept {
  return {Weighted(filter, zeroWeights), Weighted(filter, poleWeights)};
}

FilterSums FilterFormants(const FormantFilter& filter, const Word* samples,
                          Word* filtered) noexcept {
  constexpr Long kOne = 1 << kFilterSumShift;
  const std::int64_t weights = kOne + SumOfMagnitudes(filter.zeros.data(), kOrder);
  const std::int64_t rest = kSumLimit - weights * Peak(samples - kOrder, kOrder + kSubframeSamples);
  FilterSums sums;
  std::size_t first = 0;
  if (rest > 0) {
    std::transform(samples, samples + kSubframeSamples, sums.begin(),
                   [](Word sample) { return sample * kOne; });
    SubtractPrediction(filter.zeros, samples, sums);
    first = AddPrediction(filter.poles, MostSample(rest, filter.poles), sums, filtered);
  }
  FilterSaturating(filter, samples, first, sums, filtered);
  return sums;
}

}  // namespace Quorvex::g723_1
