#include "codecs/engines/g723_1/synthesis.h"

#include <cstddef>

namespace Quorvex::g723_1 {

using namespace fixed_point;

void Synthesize(const Filter& filter, const Word* excitation, Word* speech) noexcept {
  for (std::size_t n = 0; n < kSubframeSamples; ++n) {
    Word* const newest = speech + n;
    Long sum = LongShiftRight(Deposit(excitation[n]), 3);
    for (std::size_t i = 0; i < kOrder; ++i) sum = MultiplyAdd(sum, filter[i], *(newest - i - 1));
    *newest = Round(LongShiftLeft(sum, 2));
  }
}

}  // namespace Quorvex::g723_1
