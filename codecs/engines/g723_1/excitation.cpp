#include "codecs/engines/g723_1/excitation.h"

#include <algorithm>
#include <cstdint>

#include "codecs/engines/block_filter.h"
#include "codecs/engines/g723_1/fixed_codebook_tables.h"
#include "codecs/engines/sums_of_products.h"

namespace Quorvex::g723_1 {

using namespace fixed_point;

namespace {

constexpr std::size_t kPlaces = kSubframeSamples / 2;  // of a grid
constexpr std::size_t kMostPulses = 6;

}  // namespace

LagSamples SamplesOfLag(int lag, const Word* excitation) noexcept {
  LagSamples samples;
  const Word* const period = excitation - lag;
  const auto length = static_cast<std::size_t>(lag);
  samples[0] = *(period - 2);
  samples[1] = *(period - 1);
  Word* const repeated = samples.data() + 2;
  constexpr std::size_t kCount = kSubframeSamples + 2;
  const std::size_t known = std::min(length, kCount);
  std::copy_n(period, known, repeated);
  for (std::size_t n = known; n < kCount; ++n) repeated[n] = repeated[n - length];
  return samples;
}

Subframe AdaptiveVector(const LagSamples& samples, const PitchGainRow& gains) noexcept {
  Subframe vector;
  const std::int64_t weights = SumOfMagnitudes(gains.data(), kPitchTaps);
  if (weights * Peak(samples.data(), samples.size()) >= kSumLimit) {
    for (std::size_t n = 0; n < kSubframeSamples; ++n) {
      const Long sum = Correlate(samples.data() + n, gains.data(), kPitchTaps);
      vector[n] = Round(LongShiftLeft(sum, 1));
    }
    return vector;
  }
  constexpr int kUndoubledShift = 14;
  constexpr std::size_t kInBlocks = kSubframeSamples - kSubframeSamples % kFilterBlock;
  std::array<Word, kPitchTaps> newestFirst;
  std::reverse_copy(gains.begin(), gains.begin() + kPitchTaps, newestFirst.begin());
  FilterBlocks(samples.data() + kPitchTaps - 1, newestFirst.data(), kPitchTaps, kUndoubledShift,
               kInBlocks, vector.data());
  for (std::size_t n = kInBlocks; n < kSubframeSamples; ++n) {
    const Long sum = CorrelateUndoubled(samples.data() + n, gains.data(), kPitchTaps);
    vector[n] = Saturate((sum + (1 << (kUndoubledShift - 1))) >> kUndoubledShift);
  }
  return vector;
}

const PitchGainRow& PitchGains(bool hasShortLagGains, unsigned row) noexcept {
  return hasShortLagGains ? kShortLagGains[row] : kPitchGains[row];
}

// Placements are numbered with those first that have a pulse at the first place, and in that order
// from place to place. A number beyond the last placement steps over all places.
Subframe MultipulseVector(std::size_t subframe, const SubframeIndices& indices) noexcept {
  Subframe vector = {};
  auto rest = static_cast<Long>(indices.positions);
  std::size_t left = kPulses[subframe];
  const Word amplitude = kCodeGains[indices.codeGain];
  for (std::size_t place = 0; place < kPlaces && left > 0; ++place) {
    const Long withPulse = kCombinations[kMostPulses - left][place];
    if (rest >= withPulse) {
      rest -= withPulse;
      continue;
    }
    --left;
    const bool isNegative = ((indices.signs >> left) & 1) != 0;
    vector[2 * place + indices.grid] = isNegative ? Negate(amplitude) : amplitude;
  }
  return vector;
}

unsigned PlacementOf(std::size_t subframe, const std::array<bool, kPlaces>& isPulse) noexcept {
  Long number = 0;
  std::size_t left = kPulses[subframe];
  for (std::size_t place = 0; place < kPlaces && left > 0; ++place) {
    if (isPulse[place]) {
      --left;
    } else {
      number += kCombinations[kMostPulses - left][place];
    }
  }
  return static_cast<unsigned>(number);
}

void AddPulseTrain(int lag, Subframe& vector) noexcept {
  const Subframe pulses = vector;
  const auto step = static_cast<std::size_t>(lag);
  for (std::size_t begin = step; begin < kSubframeSamples; begin += step) {
    for (std::size_t n = begin; n < kSubframeSamples; ++n) {
      vector[n] = Add(vector[n], pulses[n - begin]);
    }
  }
}

Subframe AlgebraicVector(const SubframeIndices& indices) noexcept {
  Subframe vector = {};
  const Word amplitude = kCodeGains[indices.codeGain];
  for (unsigned pulse = 0; pulse < 4; ++pulse) {
    const unsigned place = (indices.positions >> (3 * pulse)) & 7;
    const std::size_t n = 8 * place + indices.grid + 2 * pulse;
    if (n >= kSubframeSamples) continue;
    const bool isPositive = ((indices.signs >> pulse) & 1) != 0;
    vector[n] = isPositive ? amplitude : Negate(amplitude);
  }
  return vector;
}

void Sharpen(int lag, unsigned pitchRow, Subframe& vector) noexcept {
  const int period = lag + kSharpeningOffsets[pitchRow];
  if (period >= kShortLagEnd) return;
  const auto step = static_cast<std::size_t>(period);
  for (std::size_t n = step; n < kSubframeSamples; ++n) {
    vector[n] = Add(vector[n], Multiply(vector[n - step], kSharpeningGains[pitchRow]));
  }
}

Subframe FixedVector(std::size_t subframe, const FrameIndices& indices) noexcept {
  const SubframeIndices& own = indices.subframes[subframe];
  if (indices.type == FrameType::kAtHighRate) {
    Subframe vector = MultipulseVector(subframe, own);
    if (own.hasPulseTrain) AddPulseTrain(indices.halfLags[subframe / 2], vector);
    return vector;
  }
  Subframe vector = AlgebraicVector(own);
  Sharpen(indices.Lag(subframe), own.pitchRow, vector);
  return vector;
}

Subframe AdaptiveVector(std::size_t subframe, const FrameIndices& indices,
                        const Word* excitation) noexcept {
  const bool hasShortLagGains = HasShortLagGains(indices.type, indices.halfLags[subframe / 2]);
  return AdaptiveVector(SamplesOfLag(indices.Lag(subframe), excitation),
                        PitchGains(hasShortLagGains, indices.subframes[subframe].pitchRow));
}

void MakeExcitation(std::size_t subframe, const FrameIndices& indices, const Subframe& adaptive,
                    Word* excitation) noexcept {
  const Subframe fixed = FixedVector(subframe, indices);
  for (std::size_t n = 0; n < kSubframeSamples; ++n) {
    excitation[n] = Add(ShiftLeft(fixed[n], 1), adaptive[n]);
  }
}

}  // namespace Quorvex::g723_1
