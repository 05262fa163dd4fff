#include "codecs/engines/g729a/filters.h"

namespace Quorvex::g729a {

using namespace fixed_point;

namespace {

// What becomes of a sum of products of Q12 coefficients: a saturating shift and rounding.
Word Sample(Long sum) noexcept { return Round(LongShiftLeft(sum, 3)); }

}  // namespace

Filter Expand(const Filter& filter, Word factor) noexcept {
  Filter expanded = filter;
  Word power = factor;
  for (std::size_t i = 1; i <= kOrder; ++i) {
    expanded[i] = Round(LongMultiply(filter[i], power));
    power = Round(LongMultiply(power, factor));
  }
  return expanded;
}

void Residual(const Filter& filter, const Word* samples, std::size_t count,
              Word* residual) noexcept {
  for (std::size_t n = 0; n < count; ++n) {
    const Word* const newest = samples + n;
    Long sum = LongMultiply(filter[0], newest[0]);
    for (std::size_t i = 1; i <= kOrder; ++i) sum = MultiplyAdd(sum, filter[i], *(newest - i));
    residual[n] = Sample(sum);
  }
}

bool Synthesize(const Filter& filter, const Word* excitation, std::size_t count,
                Word* samples) noexcept {
  bool isExact = true;
  for (std::size_t n = 0; n < count; ++n) {
    Word* const newest = samples + n;
    Long sum = LongMultiply(filter[0], excitation[n]);
    std::int64_t exact = sum;
    for (std::size_t i = 1; i <= kOrder; ++i) {
      sum = MultiplySubtract(sum, filter[i], *(newest - i));
      exact -= LongMultiply(filter[i], *(newest - i));
      isExact = isExact && exact == sum;
    }
    const Long shifted = LongShiftLeft(sum, 3);
    isExact = isExact && shifted == exact * 8 && shifted <= kMostLong - 0x8000;
    *newest = Round(shifted);
  }
  return isExact;
}

}  // namespace Quorvex::g729a
