// Three filters in a row, sample by sample:
//
//     excitation -> 1 / (1 - synthesis) -> (1 - zeros) / (1 - poles) -> 1 - harmonics
//
// The second takes what the first has before it is rounded.
#include "codecs/engines/g723_1/weighted_synthesis.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "codecs/engines/sums_of_products.h"

namespace Quorvex::g723_1 {

using namespace fixed_point;

namespace {

// Both with what came before the subframe.
struct Signals {
  std::array<Word, kOrder + kSubframeSamples> synthesized = {};
  std::array<Word, kExcitationHistory + kSubframeSamples> weighted = {};

  Word* Synthesized() noexcept { return synthesized.data() + kOrder; }
  Word* Weighted() noexcept { return weighted.data() + kExcitationHistory; }
};

void RunSaturating(const SubframeFilters& filters, const Subframe& excitation, int rise,
                   Signals& signals) noexcept {
  Word* const synthesized = signals.Synthesized();
  Word* const weighted = signals.Weighted();
  for (std::size_t n = 0; n < kSubframeSamples; ++n) {
    Long sum = Deposit(excitation[n]) >> 3;
    for (std::size_t i = 0; i < kOrder; ++i) {
      sum = MultiplyAdd(sum, filters.synthesis[i], *(synthesized + n - 1 - i));
    }
    synthesized[n] = Round(LongShiftLeft(sum, 2));
    for (std::size_t i = 0; i < kOrder; ++i) {
      sum = MultiplySubtract(sum, filters.weighting.zeros[i], *(synthesized + n - 1 - i));
    }
    sum = LongShiftLeft(sum, rise);
    for (std::size_t i = 0; i < kOrder; ++i) {
      sum = MultiplyAdd(sum, filters.weighting.poles[i], *(weighted + n - 1 - i));
    }
    weighted[n] = Round(LongShiftLeft(sum, 2));
  }
}

// Undoubled sums, Q13.
using Sums = std::array<Long, kSubframeSamples>;

constexpr int kOneShift = 13;
constexpr Long kHalf = 1 << (kOneShift - 1);

// The largest sample by which a filter does not put more than the rest into a sum.
Long MostSample(std::int64_t rest, const Filter& filter) noexcept {
  const std::int64_t most = rest / (SumOfMagnitudes(filter.data(), kOrder) + 1);
  return static_cast<Long>(std::min<std::int64_t>(most, kMostWord));
}

// What the first and the last filter do: sums become samples, and what is predicted of these is put
// into the sums.
// @return the largest magnitude, also of the memory. If it is above most, all is worthless.
Long Recur(const Filter& filter, Long most, Sums& sums, Word* samples) noexcept {
  Long peak = Peak(samples - kOrder, kOrder);
  Long last = *(samples - 1);
  for (std::size_t n = 0; n < kSubframeSamples && peak <= most; ++n) {
    Long sum = sums[n];
    for (std::size_t i = kOrder; i > 1; --i) sum += filter[i - 1] * *(samples + n - i);
    sum += filter[0] * last;
    last = (sum + kHalf) >> kOneShift;
    peak = std::max(peak, last < 0 ? -last : last);
    sums[n] = sum;
    samples[n] = static_cast<Word>(last);
  }
  return peak;
}

// The same without any operation that saturates: undoubled sums stay below kSumLimit.
// @return false if it cannot be done.
bool RunPlainly(const SubframeFilters& filters, const Subframe& excitation, int rise,
                Signals& signals) noexcept {
  Sums sums;
  std::ranges::transform(excitation, sums.begin(), [](Word sample) { return sample * kHalf; });
  const Long peakExcitation = Peak(excitation.data(), kSubframeSamples);
  const Long most = MostSample(kSumLimit - peakExcitation * kHalf, filters.synthesis);
  const Long peak = Recur(filters.synthesis, most, sums, signals.Synthesized());
  if (peak > most) return false;

  const Filter& zeros = filters.weighting.zeros;
  const std::int64_t weights = (1 << kOneShift) + SumOfMagnitudes(zeros.data(), kOrder);
  const std::int64_t rest = kSumLimit - ((weights * (peak + 1)) << rise);
  if (rest < 0) return false;
  for (std::size_t i = 0; i < kOrder; ++i) {
    const Word* const delayed = signals.Synthesized() - 1 - i;
    for (std::size_t n = 0; n < kSubframeSamples; ++n) sums[n] -= zeros[i] * delayed[n];
  }
  for (Long& sum : sums) sum *= 1 << rise;
  const Long mostWeighted = MostSample(rest, filters.weighting.poles);
  return Recur(filters.weighting.poles, mostWeighted, sums, signals.Weighted()) <= mostWeighted;
}

// The first two filters.
// @param excitation  at half its level.
// @param rise        by how many bits the weighted samples are larger than the synthesized ones.
void Run(const SubframeFilters& filters, const Subframe& excitation, int rise,
         Signals& signals) noexcept {
  if (!RunPlainly(filters, excitation, rise, signals)) {
    RunSaturating(filters, excitation, rise, signals);
  }
}

}  // namespace

Subframe ResponseOf(const SubframeFilters& filters) noexcept {
  constexpr Subframe kPulse = {8192};
  Signals signals;
  Run(filters, kPulse, 1, signals);
  return ShapeHarmonics(filters.harmonics, signals.Weighted());
}

void WeightedSynthesis::RemoveRinging(const SubframeFilters& filters,
                                      Subframe& target) const noexcept {
  Signals signals;
  std::ranges::copy(synthesized_, signals.synthesized.begin());
  std::ranges::copy(weighted_, signals.weighted.begin());
  Run(filters, {}, 0, signals);
  const Word* const ringing = signals.Weighted();
  for (std::size_t n = 0; n < kSubframeSamples; ++n) {
    const Word before = *(ringing + n - filters.harmonics.lag);
    target[n] = Round(
        MultiplyAdd(Deposit(Subtract(target[n], ringing[n])), filters.harmonics.gain, before));
  }
}

void WeightedSynthesis::Update(const SubframeFilters& filters, const Word* excitation) noexcept {
  Signals signals;
  std::ranges::copy(synthesized_, signals.synthesized.begin());
  std::ranges::copy(weighted_, signals.weighted.begin());
  Subframe own;
  std::copy_n(excitation, kSubframeSamples, own.begin());
  Run(filters, own, 0, signals);
  std::copy_n(signals.synthesized.end() - kOrder, kOrder, synthesized_.begin());
  std::copy_n(signals.weighted.end() - kExcitationHistory, kExcitationHistory, weighted_.begin());
}

}  // namespace Quorvex::g723_1
