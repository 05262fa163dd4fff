// Sums are undoubled where they are known not to saturate (sums_of_products.h).
#include "codecs/engines/g729a/filters.h"

#include <algorithm>

#include "codecs/engines/block_filter.h"
#include "codecs/engines/sums_of_products.h"

namespace Quorvex::g729a {

using namespace fixed_point;

namespace {

// What becomes of a sum of products of Q12 coefficients: a saturating shift, then rounding.
Word Sample(Long sum) noexcept { return Round(LongShiftLeft(sum, 3)); }
constexpr int kUndoubledShift = 12;
Word SampleOfUndoubled(Long sum) noexcept { return Saturate((sum + 0x800) >> kUndoubledShift); }

void ResidualSaturating(const Filter& filter, const Word* samples, std::size_t count,
                        Word* residual) noexcept {
  for (std::size_t n = 0; n < count; ++n) {
    const Word* const newest = samples + n;
    Long sum = LongMultiply(filter[0], newest[0]);
    for (std::size_t i = 1; i <= kOrder; ++i) sum = MultiplyAdd(sum, filter[i], *(newest - i));
    residual[n] = Sample(sum);
  }
}

bool SynthesizeSaturating(const Filter& filter, const Word* excitation, std::size_t count,
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
  const std::int64_t weights = SumOfMagnitudes(filter.data(), filter.size());
  if (weights * Peak(samples - kOrder, kOrder + count) >= kSumLimit) {
    ResidualSaturating(filter, samples, count, residual);
  } else {
    FilterBlocks(samples, filter.data(), filter.size(), kUndoubledShift, count, residual);
  }
}

bool Synthesize(const Filter& filter, const Word* excitation, std::size_t count,
                Word* samples) noexcept {
  // No sum saturates as long as no number is above this.
  const Long most =
      std::min(kSumLimit / (SumOfMagnitudes(filter.data(), filter.size()) + 1), 1 << 15);
  if (Peak(excitation, count) > most || Peak(samples - kOrder, kOrder) > most) {
    return SynthesizeSaturating(filter, excitation, count, samples);
  }
  bool isExact = true;
  Long last = *(samples - 1);
  for (std::size_t n = 0; n < count; ++n) {
    Long sum = filter[0] * excitation[n];
    for (std::size_t i = 2; i <= kOrder; ++i) sum -= filter[i] * *(samples + n - i);
    sum -= filter[1] * last;
    // The shift and the rounding may still saturate.
    isExact = isExact && sum >= -(1 << 27) && sum < (1 << 27) - 0x800;
    last = SampleOfUndoubled(sum);
    samples[n] = static_cast<Word>(last);
    if (last > most || last < -most) {
      const std::size_t done = n + 1;
      return SynthesizeSaturating(filter, excitation + done, count - done, samples + done) &&
             isExact;
    }
  }
  return isExact;
}

}  // namespace Quorvex::g729a
