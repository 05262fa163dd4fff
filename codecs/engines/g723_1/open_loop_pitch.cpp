// Half a frame is compared with the samples of a lag before, by the square of their correlation in
// relation to their energy. A lag that is much longer than the best so far has to be clearly
// better, so that no multiple of the true lag is taken.
#include "codecs/engines/g723_1/open_loop_pitch.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "codecs/engines/sums_of_products.h"

namespace Quorvex::g723_1 {

using namespace fixed_point;

namespace {

constexpr std::size_t kLags = kMostLag - kLeastLag + 1;

// How well a lag does: square / energy / 2^exponent.
struct Quality {
  int exponent;
  Word square;
  Word energy;
};

// @param correlation  above 0.
Quality QualityOf(Long correlation, Long energy) noexcept {
  const int norm = LongNorm(correlation);
  const Word rounded = Round(correlation * (1 << norm));
  const Long square = LongMultiply(rounded, rounded);
  const int squareNorm = LongNorm(square);
  const int energyNorm = LongNorm(energy);
  Quality quality = {2 * norm + squareNorm - energyNorm, High(square * (1 << squareNorm)),
                     Round(LongShiftLeft(energy, energyNorm))};
  if (quality.square >= quality.energy) {
    quality.square = static_cast<Word>(quality.square >> 1);
    --quality.exponent;
  }
  return quality;
}

// @param isMuchLonger  the lag of this quality.
bool IsBetter(const Quality& quality, const Quality& best, bool isMuchLonger) noexcept {
  if (quality.exponent + 1 < best.exponent) return true;
  if (quality.exponent > best.exponent) return false;
  const auto square =
      quality.exponent < best.exponent ? static_cast<Word>(best.square >> 1) : best.square;
  const Long product = LongMultiply(quality.square, best.energy);
  if (MultiplySubtract(product, quality.energy, square) <= 0) return false;
  if (!isMuchLonger) return true;
  const Long most = MultiplyAdd(LongNegate(product >> 2), quality.square, best.energy);
  return MultiplySubtract(most, quality.energy, square) > 0;
}

// By the lag, from the least on: the correlation with the samples a lag before, and their energy.
struct Comparison {
  std::array<Long, kLags> correlations;
  std::array<Long, kLags> energies;
};

// Energies of the samples a lag before, undoubled. 120 squares of 12 bits fit into 32 bits.
// @return the largest of them, or that of lag kLeastLag - 1, where the energies start from.
Long SetEnergies(const Word* samples, Comparison& comparison) noexcept {
  const Word* before = samples - (kLeastLag - 1);
  Long energy = CorrelateUndoubled(before, before, kHalfSamples);
  Long peak = energy;
  for (Long& result : comparison.energies) {
    --before;
    const Word leaving = before[kHalfSamples];
    energy += *before * *before - leaving * leaving;
    peak = std::max(peak, energy);
    result = energy;
  }
  return peak;
}

void CompareSaturating(const Word* samples, Comparison& comparison) noexcept {
  const Word* before = samples - (kLeastLag - 1);
  Long energy = Correlate(before, before, kHalfSamples);
  for (std::size_t i = 0; i < kLags; ++i) {
    --before;
    const Word leaving = before[kHalfSamples];
    energy = MultiplySubtract(energy, leaving, leaving);
    energy = MultiplyAdd(energy, *before, *before);
    comparison.energies[i] = energy;
    comparison.correlations[i] = Correlate(samples, before, kHalfSamples);
  }
}

Comparison Compare(const Word* samples) noexcept {
  Comparison comparison;
  const Long peak = std::max(SetEnergies(samples, comparison),
                             CorrelateUndoubled(samples, samples, kHalfSamples));
  // No correlation is larger than the energies of both sides, nor is a part of it.
  if (peak >= kSumLimit) {
    CompareSaturating(samples, comparison);
    return comparison;
  }
  for (std::size_t i = 0; i < kLags; ++i) {
    const Word* const before = samples - kLeastLag - i;
    comparison.correlations[i] = 2 * CorrelateUndoubled(samples, before, kHalfSamples);
    comparison.energies[i] *= 2;
  }
  return comparison;
}

// A bound, below which no quality is better than this one: square / energy, less 2^-10 of it. The
// roundings of two qualities make less than that.
Long LeastRatio(Long correlation, Long energy) noexcept {
  if (energy <= 0) return 0;  // it saturated on its way
  const std::int64_t ratio = std::int64_t{correlation} * correlation / energy;
  return SaturateLong(ratio - (ratio >> 10) - 1);
}

}  // namespace

int OpenLoopLag(const Word* samples) noexcept {
  constexpr int kMuchLonger = 18;
  const Comparison comparison = Compare(samples);
  int bestLag = kLeastLag;
  Quality best = {30, 0x4000, kMostWord};
  std::int64_t leastRatio = 0;
  for (int lag = kLeastLag; lag <= kMostLag; ++lag) {
    const auto i = static_cast<std::size_t>(lag - kLeastLag);
    const Long correlation = comparison.correlations[i];
    const Long energy = comparison.energies[i];
    if (correlation <= 0 || std::int64_t{correlation} * correlation < leastRatio * energy) continue;
    const Quality quality = QualityOf(correlation, energy);
    if (!IsBetter(quality, best, lag >= bestLag + kMuchLonger)) continue;
    best = quality;
    bestLag = lag;
    leastRatio = LeastRatio(correlation, energy);
  }
  return bestLag;
}

}  // namespace Quorvex::g723_1
