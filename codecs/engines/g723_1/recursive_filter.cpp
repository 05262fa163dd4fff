#include "codecs/engines/g723_1/recursive_filter.h"

#include <algorithm>
#include <cstdlib>

#include "codecs/engines/sums_of_products.h"

namespace Quorvex::g723_1 {

using namespace fixed_point;

Long MostSample(std::int64_t rest, const Filter& filter) noexcept {
  const std::int64_t most = rest / (SumOfMagnitudes(filter.data(), kOrder) + 1);
  return static_cast<Long>(std::clamp<std::int64_t>(most, -1, kMostWord));
}

void SubtractPrediction(const Filter& filter, const Word* samples, FilterSums& sums) noexcept {
  for (std::size_t i = 0; i < kOrder; ++i) {
    const Word* const delayed = samples - 1 - i;
    for (std::size_t n = 0; n < kSubframeSamples; ++n) sums[n] -= filter[i] * delayed[n];
  }
}

std::size_t AddPrediction(const Filter& filter, Long most, FilterSums& sums,
                          Word* samples) noexcept {
  if (Peak(samples - kOrder, kOrder) > most) return 0;
  // In registers: to load vectors of samples that were stored right before would be slow.
  std::array<Long, kOrder> past;
  for (std::size_t i = 0; i < kOrder; ++i) past[i] = *(samples - 1 - i);
  for (std::size_t n = 0; n < kSubframeSamples; ++n) {
    Long sum = sums[n];
    for (std::size_t i = kOrder; i-- > 0;) sum += filter[i] * past[i];
    const Long sample = (sum + (1 << (kFilterSumShift - 1))) >> kFilterSumShift;
    if (std::abs(sample) > most) return n;
    sums[n] = sum;
    samples[n] = static_cast<Word>(sample);
    for (std::size_t i = kOrder - 1; i > 0; --i) past[i] = past[i - 1];
    past[0] = sample;
  }
  return kSubframeSamples;
}

}  // namespace Quorvex::g723_1
