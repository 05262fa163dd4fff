// Three filters in a row, sample by sample:
//
//     excitation -> 1 / (1 - synthesis) -> (1 - zeros) / (1 - poles) -> 1 - harmonics
//
// The second takes what the first has before it is rounded.
#include "codecs/engines/g723_1/weighted_synthesis.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "codecs/engines/g723_1/recursive_filter.h"
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

// The same without any operation that saturates: undoubled sums stay below kSumLimit.
// @return false if it cannot be done.
bool RunPlainly(const SubframeFilters& filters, const Subframe& excitation, int rise,
                Signals& signals) noexcept {
  constexpr Long kHalf = 1 << (kFilterSumShift - 1);
  FilterSums sums;
  std::ranges::transform(excitation, sums.begin(), [](Word sample) { return sample * kHalf; });
  const Long peakExcitation = Peak(excitation.data(), kSubframeSamples);
  const Long most = MostSample(kSumLimit - peakExcitation * kHalf, filters.synthesis);
  Word* const synthesized = signals.Synthesized();
  if (AddPrediction(filters.synthesis, most, sums, synthesized) < kSubframeSamples) return false;

  const Filter& zeros = filters.weighting.zeros;
  const std::int64_t weights = (1 << kFilterSumShift) + SumOfMagnitudes(zeros.data(), kOrder);
  const std::int64_t peak = Peak(synthesized - kOrder, kOrder + kSubframeSamples);
  // The second filter takes sums, which are up to half of one beside the samples made of them.
  const std::int64_t rest = kSumLimit - ((weights * (peak + 1)) << rise);
  if (rest < 0) return false;
  SubtractPrediction(zeros, synthesized, sums);
  for (Long& sum : sums) sum *= 1 << rise;
  const Filter& poles = filters.weighting.poles;
  return AddPrediction(poles, MostSample(rest, poles), sums, signals.Weighted()) ==
         kSubframeSamples;
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
