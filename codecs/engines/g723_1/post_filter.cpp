// The signal path:
//
//     speech -> A(z/0.65) -> 1 / A(z/0.75) -> tilt -> level of the speech, x 2
#include "codecs/engines/g723_1/post_filter.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "codecs/engines/g723_1/arithmetic.h"
#include "codecs/engines/g723_1/formant_filter.h"
#include "codecs/engines/g723_1/recursive_filter.h"
#include "codecs/engines/g723_1/weighting_tables.h"
#include "codecs/engines/sums_of_products.h"

namespace Quorvex::g723_1 {

using namespace fixed_point;

namespace {

constexpr Word kTilt = -16384;  // of half the reflection: -0.25, Q15

// A step of 1 / 2^shift of the way, rounded.
Word Approach(Word last, Word next, int shift) noexcept {
  return static_cast<Word>(last + ((next - last + (1 << (shift - 1))) >> shift));
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
  reflection_ = Approach(reflection_, reflection, 2);
  return static_cast<Word>(Multiply(reflection_, kTilt) & ~3);
}

void PostFilter::SharpenFormants(const g723_1::Filter& filter, Word tilt, const Word* speech,
                                 Word* filtered) noexcept {
  std::array<Word, kOrder + kSubframeSamples> output;
  std::ranges::copy(poles_, output.begin());
  Word* const begin = output.data() + kOrder;
  const FilterSums sums =
      FilterFormants(FormantFilterOf(filter, kPostFilterZeros, kPostFilterPoles), speech, begin);
  for (std::size_t n = 0; n < kSubframeSamples; ++n) {
    // The tilt is a multiple of 4: to have the product in Q13 loses nothing.
    filtered[n] = SampleOf(sums[n] + *(begin + n - 1) * (tilt >> 2));
  }
  std::copy_n(output.end() - kOrder, kOrder, poles_.begin());
}

// @param target  energy of the quarter of the speech.
void PostFilter::ControlLevel(Long target, Word* filtered) noexcept {
  Subframe quarter;
  std::transform(filtered, filtered + kSubframeSamples, quarter.begin(),
                 [](Word sample) { return static_cast<Word>(sample >> 2); });
  const Long output = SaturateLong(ExactEnergy(quarter.data(), quarter.size()));
  const Word gain = GainBetween(output, target);
  Subframe gains;
  for (Word& value : gains) value = gain_ = Approach(gain_, gain, 4);
  for (std::size_t n = 0; n < kSubframeSamples; ++n) {
    const Word more = Saturate(gains[n] + (gains[n] >> 4));
    filtered[n] = Saturate((filtered[n] * more + 0x400) >> 11);
  }
}

}  // namespace Quorvex::g723_1
