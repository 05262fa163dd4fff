#include "codecs/engines/g723_1/synthesis.h"

#include <algorithm>
#include <cstddef>

#include "codecs/engines/sums_of_products.h"

namespace Quorvex::g723_1 {

using namespace fixed_point;

namespace {

void SynthesizeSaturating(const Filter& filter, const Word* excitation, std::size_t count,
                          Word* speech) noexcept {
  for (std::size_t n = 0; n < count; ++n) {
    Word* const newest = speech + n;
    Long sum = LongShiftRight(Deposit(excitation[n]), 3);
    for (std::size_t i = 0; i < kOrder; ++i) sum = MultiplyAdd(sum, filter[i], *(newest - i - 1));
    *newest = Round(LongShiftLeft(sum, 2));
  }
}

}  // namespace

void Synthesize(const Filter& filter, const Word* excitation, Word* speech) noexcept {
  // Sums of products are undoubled. An excitation takes up to 2^27 of one, and none saturates as
  // long as no sample is above this.
  constexpr Long kExcitationPart = 1 << 27;
  const Long most = std::min(
      (kSumLimit - kExcitationPart) / (SumOfMagnitudes(filter.data(), kOrder) + 1), 1 << 15);
  std::size_t n = 0;
  if (Peak(speech - kOrder, kOrder) <= most) {
    for (Long last = *(speech - 1); n < kSubframeSamples && last <= most && last >= -most; ++n) {
      Long sum = excitation[n] * 0x1000;
      for (std::size_t i = kOrder; i >= 2; --i) sum += filter[i - 1] * *(speech + n - i);
      sum += filter[0] * last;
      last = Saturate((sum + 0x1000) >> 13);
      speech[n] = static_cast<Word>(last);
    }
  }
  SynthesizeSaturating(filter, excitation + n, kSubframeSamples - n, speech + n);
}

}  // namespace Quorvex::g723_1
