// Three filters in a row, sample by sample:
//
//     excitation -> 1 / (1 - synthesis) -> (1 - zeros) / (1 - poles) -> 1 - harmonics
//
// The second takes what the first has before it is rounded.
#include "codecs/engines/g723_1/weighted_synthesis.h"

#include <algorithm>

namespace Quorvex::g723_1 {

using namespace fixed_point;

namespace {

using Excitation = std::array<Long, kSubframeSamples>;  // Q13

constexpr Long kPulse = 0x04000000;  // 8192

// Both with what came before the subframe.
struct Signals {
  std::array<Word, kOrder + kSubframeSamples> synthesized = {};
  std::array<Word, kExcitationHistory + kSubframeSamples> weighted = {};
};

// @param rise  by how many bits the weighted samples are larger than the synthesized ones.
void Run(const SubframeFilters& filters, const Excitation& excitation, int rise,
         Signals& signals) noexcept {
  Word* const synthesized = signals.synthesized.data() + kOrder;
  Word* const weighted = signals.weighted.data() + kExcitationHistory;
  for (std::size_t n = 0; n < kSubframeSamples; ++n) {
    Long sum = excitation[n];
    for (std::size_t j = 0; j < kOrder; ++j) {
      sum = MultiplyAdd(sum, filters.synthesis[j], *(synthesized + n - 1 - j));
    }
    synthesized[n] = Round(LongShiftLeft(sum, 2));
    for (std::size_t j = 0; j < kOrder; ++j) {
      sum = MultiplySubtract(sum, filters.weighting.zeros[j], *(synthesized + n - 1 - j));
    }
    sum = LongShiftLeft(sum, rise);
    for (std::size_t j = 0; j < kOrder; ++j) {
      sum = MultiplyAdd(sum, filters.weighting.poles[j], *(weighted + n - 1 - j));
    }
    weighted[n] = Round(LongShiftLeft(sum, 2));
  }
}

}  // namespace

Subframe ResponseOf(const SubframeFilters& filters) noexcept {
  Signals signals;
  Run(filters, {kPulse}, 1, signals);
  return ShapeHarmonics(filters.harmonics, signals.weighted.data() + kExcitationHistory);
}

void WeightedSynthesis::RemoveRinging(const SubframeFilters& filters,
                                      Subframe& target) const noexcept {
  Signals signals;
  std::ranges::copy(synthesized_, signals.synthesized.begin());
  std::ranges::copy(weighted_, signals.weighted.begin());
  Run(filters, {}, 0, signals);
  const Word* const ringing = signals.weighted.data() + kExcitationHistory;
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
  Excitation scaled;
  std::transform(excitation, excitation + kSubframeSamples, scaled.begin(),
                 [](Word sample) { return Deposit(sample) >> 3; });
  Run(filters, scaled, 0, signals);
  std::copy_n(signals.synthesized.end() - kOrder, kOrder, synthesized_.begin());
  std::copy_n(signals.weighted.end() - kExcitationHistory, kExcitationHistory, weighted_.begin());
}

}  // namespace Quorvex::g723_1
