#include "codecs/engines/g723_1/silence_encoder.h"

#include <algorithm>
#include <cstdlib>
#include <span>

#include "codecs/engines/g723_1/comfort_noise_tables.h"
#include "codecs/engines/g723_1/line_spectrum.h"
#include "codecs/engines/g723_1/line_spectrum_search.h"
#include "codecs/engines/sums_of_products.h"

namespace Quorvex::g723_1 {

using namespace fixed_point;

namespace {

// A filter is wrong when it leaves so much more than the best one, Q15: 0.84 dB.
constexpr Word kTolerance = 7000;
// A level is wrong when its index is further off.
constexpr int kLevelTolerance = 3;

// At the level of the one that is shifted least.
Autocorrelation Sum(std::span<const Autocorrelation> parts) noexcept {
  constexpr int kSpareBits = 14;  // a sum of four has 32 bits
  int least = parts[0].shift;
  for (const Autocorrelation& part : parts) least = std::min(least, part.shift);
  std::array<Long, kOrder + 1> sums = {};
  for (const Autocorrelation& part : parts) {
    for (std::size_t i = 0; i <= kOrder; ++i) {
      sums[i] = LongAdd(sums[i], LongShiftLeft(part.values[i], least + kSpareBits - part.shift));
    }
  }
  const int excess = std::max(0, 16 - LongNorm(sums[0]));
  Autocorrelation sum;
  for (std::size_t i = 0; i <= kOrder; ++i) sum.values[i] = Low(sums[i] >> excess);
  sum.shift = least + kSpareBits - excess;
  return sum;
}

}  // namespace

void SilenceEncoder::AddFrame(const std::array<Autocorrelation, kSubframes>& windows) noexcept {
  std::shift_right(frames_.begin(), frames_.end(), 1);
  frames_.front() = Sum(windows);
}

FrameIndices SilenceEncoder::Encode(const LineSpectrum& last) noexcept {
  const Prediction current = Predict(frames_.front());
  std::shift_right(energies_.begin(), energies_.end(), 1);
  energies_.front() = {current.error, frames_.front().shift};
  energyCount_ = wasSpeech_ ? 1 : std::min(energyCount_ + 1, kEnergies);
  const unsigned levelIndex = LevelIndex();
  const int change = static_cast<int>(levelIndex) - static_cast<int>(levelIndex_);

  FrameIndices indices;
  indices.type = FrameType::kUntransmitted;
  if (!wasSpeech_ && Fits(filter_) && std::abs(change) <= kLevelTolerance) return indices;
  indices.type = FrameType::kSilence;
  indices.spectrum = EncodeFilter(current.filter, last);
  indices.noiseLevel = levelIndex_ = levelIndex;
  noise_.SetLevel(NoiseLevelOf(levelIndex));
  return indices;
}

NoisePitch SilenceEncoder::MakeExcitation(Word* excitation) noexcept {
  if (wasSpeech_) noise_.Restart();
  const NoisePitch pitch = noise_.Make(wasSpeech_, excitation);
  wasSpeech_ = false;
  return pitch;
}

SilenceEncoder::FilterCorrelation SilenceEncoder::CorrelationOf(const Filter& filter) noexcept {
  constexpr Word kOne = 0x2000;
  constexpr Long kOneSquared = 0x04000000;
  const Word* const a = filter.data();
  const Long energy = LongAdd(LongShiftRight(fixed_point::Correlate(a, a, kOrder), 1), kOneSquared);
  FilterCorrelation correlation;
  correlation.shift = LongNorm(energy) - 2;
  correlation.values[0] = Round(LongShiftLeft(energy, correlation.shift));
  for (std::size_t i = 1; i <= kOrder; ++i) {
    const Long sum = fixed_point::Correlate(a, a + i, kOrder - i, LongMultiply(-kOne, a[i - 1]));
    correlation.values[i] = Round(LongShiftLeft(sum, correlation.shift));
  }
  return correlation;
}

// Whether the filter leaves about as little of the current frame as its own one.
bool SilenceEncoder::Fits(const FilterCorrelation& filter) const noexcept {
  Long left = 0;
  for (std::size_t i = 0; i <= kOrder; ++i) {
    left = MultiplyAdd(left, filter.values[i], static_cast<Word>(frames_.front().values[i] >> 2));
  }
  const Word energy = energies_.front().value;
  return left <= LongShiftLeft(Add(energy, MultiplyRounded(energy, kTolerance)), filter.shift + 9);
}

unsigned SilenceEncoder::LevelIndex() const noexcept {
  const std::span<const Energy> energies(energies_.data(), energyCount_);
  int least = energies[0].shift;
  for (const Energy& energy : energies) least = std::min(least, energy.shift);
  Long sum = 0;
  for (const Energy& energy : energies) {
    sum += MultiplyRounded(kEnergyScales[energyCount_],
                           ShiftRight(energy.value, energy.shift - least));
  }
  return NoiseLevelIndex(LongShiftLeft(sum, 15 - least));
}

// The frames before, all together, rather than the current one, unless the noise has changed since.
// @return the spectrum's index.
unsigned SilenceEncoder::EncodeFilter(const Filter& current, const LineSpectrum& last) noexcept {
  average_ = Predict(Sum(std::span(frames_).subspan<1>())).filter;
  filter_ = CorrelationOf(average_);
  const bool fits = Fits(filter_);
  if (!fits) filter_ = CorrelationOf(current);
  const unsigned index = QuantizeSpectrum(SpectrumOf(fits ? average_ : current, last), last);
  spectrum_ = DecodeSpectrum(index, last);
  return index;
}

}  // namespace Quorvex::g723_1
