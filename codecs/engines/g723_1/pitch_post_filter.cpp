// Sums are undoubled: 60 products of a normalised copy, whose magnitudes are 2^12 at most, stay
// below kSumLimit.
#include "codecs/engines/g723_1/pitch_post_filter.h"

#include <algorithm>
#include <cstddef>

#include "codecs/engines/g723_1/arithmetic.h"
#include "codecs/engines/sums_of_products.h"

namespace Quorvex::g723_1 {

using namespace fixed_point;

namespace {

/// Where a subframe finds itself again.
struct Match {
  int offset = 0;  // 0: nowhere
  Long correlation = 0;
  Long energy = 0;
};

/// What is taken of the samples themselves and of those at the offset, Q15.
struct Weights {
  Word own = kMostWord;
  Word other = 0;
};

Long Correlation(const Word* a, const Word* b) noexcept {
  return CorrelateUndoubled(a, b, kSubframeSamples);
}

// @param direction  -1: looks for what is a lag before, 1: for what is a lag later.
// @param room  samples from the subframe's begin to the frame's end.
Match FindMatch(const Word* subframe, int halfLag, int direction, int room) noexcept {
  Match match;
  const int middle = std::min(halfLag, kMostLag);
  for (int lag = middle - 3; lag <= middle + 3; ++lag) {
    const int offset = direction * lag;
    if (offset + static_cast<int>(kSubframeSamples) > room) break;
    const Long correlation = Correlation(subframe, subframe + offset);
    if (correlation <= match.correlation) continue;
    match.correlation = correlation;
    match.offset = offset;
  }
  if (match.offset != 0) {
    match.energy = Correlation(subframe + match.offset, subframe + match.offset);
  }
  return match;
}

// The weights of a match with such a correlation and energies. They keep the subframe's energy.
Weights WeightsOf(Word own, Word correlation, Word other, Word weight) noexcept {
  // Less than 1.25 dB are gained.
  if (LongMultiply(correlation, correlation) <= LongMultiply(own, other) >> 2) return {};
  const Word gain = correlation < other ? Multiply(Divide(correlation, other), weight) : weight;
  const Long halfOwn = Deposit(own) >> 1;
  const Long halfSum = LongAdd(MultiplyAdd(halfOwn, correlation, gain),
                               LongMultiply(other, Multiply(gain, gain)) >> 1);
  const Word scale = SquareRoot(Deposit(Quotient(halfOwn, Round(halfSum))));
  return {scale, Multiply(gain, scale)};
}

// Chooses between both matches. @param weights  receives what belongs to the choice.
int Choose(Long own, const Match& before, const Match& later, Word weight,
           Weights& weights) noexcept {
  const int norm =
      LongNorm(std::max({own, before.correlation, before.energy, later.correlation, later.energy}));
  const auto normal = [norm](Long value) { return High(value << norm); };
  bool isBefore = before.offset != 0;
  if (isBefore && later.offset != 0) {
    const Word cBefore = normal(before.correlation);
    const Word cLater = normal(later.correlation);
    isBefore = MultiplyRounded(cBefore, cBefore) * normal(later.energy) >
               MultiplyRounded(cLater, cLater) * normal(before.energy);
  }
  const Match& chosen = isBefore ? before : later;
  if (chosen.offset != 0) {
    weights = WeightsOf(normal(own), normal(chosen.correlation), normal(chosen.energy), weight);
  }
  return chosen.offset;
}

void Mix(const Word* own, int offset, const Weights& weights, Word* mixed) noexcept {
  const Word* const other = own + offset;
  for (std::size_t n = 0; n < kSubframeSamples; ++n) {
    // Both weights are positive, and their sum is below 1.25: saturating at the end does.
    mixed[n] = Saturate((own[n] * weights.own + other[n] * weights.other + 0x4000) >> 15);
  }
}

}  // namespace

void FilterPitch(const Word* excitation, const Word* normalized,
                 const std::array<int, kHalves>& halfLags, Word weight, Word* filtered) noexcept {
  for (std::size_t begin = 0; begin < kFrameSamples; begin += kSubframeSamples) {
    const Word* const subframe = normalized + begin;
    const int halfLag = halfLags[begin / kHalfSamples];
    const Match before = FindMatch(subframe, halfLag, -1, kFrameSamples);
    const Match later = FindMatch(subframe, halfLag, 1, static_cast<int>(kFrameSamples - begin));
    Weights weights;
    const int offset = Choose(Correlation(subframe, subframe), before, later, weight, weights);
    Mix(excitation + begin, offset, weights, filtered + begin);
  }
}

}  // namespace Quorvex::g723_1
