#include "codecs/engines/g723_1/synthesis.h"

#include <algorithm>
#include <cstddef>

#include "codecs/engines/g723_1/recursive_filter.h"
#include "codecs/engines/sums_of_products.h"

namespace Quorvex::g723_1 {

using namespace fixed_point;

void Synthesize(const Filter& filter, const Word* excitation, Word* speech) noexcept {
  FilterSums sums;
  std::transform(excitation, excitation + kSubframeSamples, sums.begin(),
                 [](Word sample) { return sample * 0x1000; });
  const Long excitationPart = Peak(excitation, kSubframeSamples) * 0x1000;
  const Long most = MostSample(kSumLimit - excitationPart, filter);
  for (std::size_t n = AddPrediction(filter, most, sums, speech); n < kSubframeSamples; ++n) {
    Word* const newest = speech + n;
    Long sum = LongShiftRight(Deposit(excitation[n]), 3);
    for (std::size_t i = 0; i < kOrder; ++i) sum = MultiplyAdd(sum, filter[i], *(newest - i - 1));
    *newest = Round(LongShiftLeft(sum, 2));
  }
}

}  // namespace Quorvex::g723_1
