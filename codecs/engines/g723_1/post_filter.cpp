// The signal path:
//
//     speech -> A(z/0.65) -> 1 / A(z/0.75) -> tilt -> level of the speech, x 2
#include "codecs/engines/g723_1/post_filter.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "codecs/engines/g723_1/arithmetic.h"
#include "codecs/engines/g723_1/weighting_tables.h"
#include "codecs/engines/sums_of_products.h"

namespace Quorvex::g723_1 {

using namespace fixed_point;

namespace {

constexpr Word kTilt = -16384;  // of half the reflection: -0.25, Q15

Filter Weight(const Filter& filter, const Filter& weights) noexcept {
  Filter weighted;
  for (std::size_t i = 0; i < kOrder; ++i) {
    weighted[i] = MultiplyRounded(filter[i], weights[i]);
  }
  return weighted;
}

// A step from `last` to `next`, of which it takes `part`, Q15.
Word Approach(Word last, Word next, Word part) noexcept {
  return Round(MultiplyAdd(MultiplySubtract(Deposit(last), last, part), next, part));
}

// The gain from an output's energy to a target's, Q12.
Word GainBetween(Long output, Long target) noexcept {
  if (output == 0 || target == 0) return 0x1000;
  const int outputNorm = LongNorm(output);
  const int targetNorm = LongNorm(target);
  const Word ratio = Quotient((target << targetNorm) >> 1, High(output << outputNorm));
  return SquareRoot(LongShiftRight(Deposit(ratio), std::max(0, 5 - outputNorm + targetNorm)));
}

}  // namespace

void PostFilter::Filter(const g723_1::Filter& filter, const Word* speech, Word* filtered) noexcept {
  // Sums over a normalised copy, of magnitudes up to 2^12, do not saturate.
  Subframe copy;
  const int shift = NormalizedCopy(speech, kSubframeSamples, copy.data());
  const Long energy = 2 * CorrelateUndoubled(copy.data(), copy.data(), kSubframeSamples);
  const Long next = 2 * CorrelateUndoubled(copy.data(), copy.data() + 1, kSubframeSamples - 1);

  SharpenFormants(filter, NextTilt(energy, next), speech, filtered);
  ControlLevel(LongShiftRight(energy, 2 * shift + 4), filtered);
}

// How much of each sample is taken from the next.
// @param energy, next  the speech's autocorrelation at lags 0 and 1.
Word PostFilter::NextTilt(Long energy, Long next) noexcept {
  Word reflection = 0;
  if (High(energy) != 0) {
    reflection = Quotient(LongAbsolute(next >> 1), High(energy));
    if (next < 0) reflection = Negate(reflection);
  }
  reflection_ = Approach(reflection_, reflection, 0x2000);
  return static_cast<Word>(Multiply(reflection_, kTilt) & ~3);
}

void PostFilter::SharpenFormants(const g723_1::Filter& filter, Word tilt, const Word* speech,
                                 Word* filtered) noexcept {
  const g723_1::Filter zeros = Weight(filter, kPostFilterZeros);
  const g723_1::Filter poles = Weight(filter, kPostFilterPoles);
  std::array<Word, kOrder + kSubframeSamples> output;
  std::ranges::copy(poles_, output.begin());
  for (std::size_t n = 0; n < kSubframeSamples; ++n) {
    Long sum = Deposit(speech[n]) >> 2;
    for (std::size_t i = 1; i <= kOrder; ++i) {
      sum = MultiplySubtract(sum, zeros[i - 1], *(speech + n - i));
    }
    Word* const newest = output.data() + kOrder + n;
    for (std::size_t i = 1; i <= kOrder; ++i) sum = MultiplyAdd(sum, poles[i - 1], *(newest - i));
    sum = LongShiftLeft(sum, 2);
    *newest = Round(sum);
    filtered[n] = Round(MultiplyAdd(sum, *(newest - 1), tilt));
  }
  std::copy_n(output.end() - kOrder, kOrder, poles_.begin());
}

// @param target  energy of the quarter of the speech.
void PostFilter::ControlLevel(Long target, Word* filtered) noexcept {
  Long output = 0;
  for (std::size_t n = 0; n < kSubframeSamples; ++n) {
    const auto quarter = static_cast<Word>(filtered[n] >> 2);
    output = MultiplyAdd(output, quarter, quarter);
  }
  const Word gain = GainBetween(output, target);
  for (std::size_t n = 0; n < kSubframeSamples; ++n) {
    gain_ = Approach(gain_, gain, 0x800);
    const Word more = Add(gain_, static_cast<Word>(gain_ >> 4));
    filtered[n] = Round(LongShiftLeft(LongMultiply(filtered[n], more), 4));
  }
}

}  // namespace Quorvex::g723_1
