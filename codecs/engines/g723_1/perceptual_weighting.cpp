#include "codecs/engines/g723_1/perceptual_weighting.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "codecs/engines/g723_1/weighting_tables.h"
#include "codecs/engines/sums_of_products.h"

namespace Quorvex::g723_1 {

using namespace fixed_point;

namespace {

// Lags that are tried around that of the half.
constexpr int kLagRange = 3;
constexpr std::size_t kLags = 2 * kLagRange + 1;

constexpr Word kMostGain = 0x2800;  // 0.3125

struct Match {
  Word correlation = 0;
  Word energy = 0;
  int lag = kLeastLag;
};

Word GainOf(const Match& match, Word targetEnergy) noexcept {
  const Long energies = LongMultiply(targetEnergy, match.energy);
  const Long least = LongAdd(energies >> 2, energies >> 3);
  if (least >= LongMultiply(match.correlation, match.correlation)) return 0;
  if (match.correlation >= match.energy) return kMostGain;
  return MultiplyRounded(Divide(match.correlation, match.energy), kMostGain);
}

}  // namespace

FormantFilter WeightingOf(const Filter& filter) noexcept {
  return FormantFilterOf(filter, kWeightingZeros, kWeightingPoles);
}

HarmonicFilter HarmonicsOf(const Word* samples, int halfLag) noexcept {
  // The samples have magnitudes up to 4096: 60 products, doubled, take 31 bits at most.
  const auto product = [](const Word* a, const Word* b) {
    return 2 * CorrelateUndoubled(a, b, kSubframeSamples);
  };
  const Long targetEnergy = product(samples, samples);
  std::array<Long, kLags> correlations;
  std::array<Long, kLags> energies;
  Long peak = targetEnergy;  // which no correlation is above unless an energy is
  for (std::size_t i = 0; i < kLags; ++i) {
    const Word* const before = samples - halfLag + kLagRange - static_cast<std::ptrdiff_t>(i);
    correlations[i] = product(samples, before);
    energies[i] = product(before, before);
    peak = std::max(peak, energies[i]);
  }

  const int norm = LongNorm(peak);
  const auto scaled = [norm](Long value) { return Round(value * (1 << norm)); };
  Match best;
  Word bestSquare = 1;
  Word bestEnergy = kMostWord;
  for (std::size_t i = 0; i < kLags; ++i) {
    const Word correlation = scaled(correlations[i]);
    if (correlation <= 0) continue;
    const Word energy = scaled(energies[i]);
    const Word square = MultiplyRounded(correlation, correlation);
    if (LongMultiply(square, bestEnergy) <= LongMultiply(bestSquare, energy)) continue;
    bestSquare = square;
    bestEnergy = energy;
    best = {correlation, energy, halfLag - kLagRange + static_cast<int>(i)};
  }
  return {best.lag, GainOf(best, scaled(targetEnergy))};
}

Subframe ShapeHarmonics(const HarmonicFilter& filter, const Word* weighted) noexcept {
  Subframe shaped;
  for (std::size_t n = 0; n < kSubframeSamples; ++n) {
    // As if the sample were the upper half, but in 32 bits: the gain is below 1.
    const Long less = (0x8000 - 2 * filter.gain * *(weighted + n - filter.lag)) >> 16;
    shaped[n] = Saturate(weighted[n] + less);
  }
  return shaped;
}

}  // namespace Quorvex::g723_1
