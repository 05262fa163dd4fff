#include "codecs/engines/g723_1/comfort_noise.h"

#include <algorithm>
#include <cstddef>
#include <numeric>

#include "codecs/engines/g723_1/arithmetic.h"
#include "codecs/engines/g723_1/comfort_noise_tables.h"
#include "codecs/engines/g723_1/excitation.h"
#include "codecs/engines/g723_1/fixed_codebook_tables.h"

namespace Quorvex::g723_1 {

using namespace fixed_point;

namespace {

// The levels of the first two segments are 16 each, 2 and 4 apart; of the last 32, 8 apart.
constexpr unsigned kSegmentLength = 16;
constexpr unsigned kSegments = 3;
constexpr unsigned kLevels = 64;

Word LevelIn(unsigned segment, int index) noexcept {
  return static_cast<Word>(kSegmentLevels[segment] + index * (2 << segment));
}

// Which of a segment's levels comes next.
int NearestIn(unsigned segment, Long energy) noexcept {
  const auto distance = [&](int index) {
    const Word level = LevelIn(segment, index);
    return LongSubtract(LongMultiply(level, level), energy);
  };
  int index = segment == 2 ? 16 : 8;
  for (int step = index / 2; step > 0; step /= 2) index += distance(index) <= 0 ? step : -step;
  const Long here = distance(index);
  if (here <= 0) return LongNegate(distance(index + 1)) < here ? index : index + 1;
  return here < LongNegate(distance(index - 1)) ? index : index - 1;
}

constexpr Word kPulse = 16384;
constexpr Word kPulseShare = 2979;  // 1 / 11, Q15
constexpr Word kMostAmplitude = 10000;

// How far samples are shifted to the right so that the sum of their squares has many bits.
int ShiftOf(const Word* samples) noexcept {
  Word peak = 0;
  for (std::size_t n = 0; n < kHalfSamples; ++n) peak = std::max(peak, Absolute(samples[n]));
  return peak == 0 ? 0 : std::max(4 - Norm(peak), -2);
}

// The amplitude that pulses need so that they and the samples together have the energy of the
// level. It solves a quadratic equation; where that has no root, it is where its minimum is.
Word AmplitudeOf(const Word* samples, const Word* pulses, Word level) noexcept {
  const int shift = ShiftOf(samples);
  Long energy = 0;
  Long common = 0;
  for (std::size_t n = 0; n < kHalfSamples; ++n) {
    const Word sample = ShiftRight(samples[n], shift);
    energy = MultiplyAdd(energy, sample, sample);
    common = MultiplyAdd(common, sample, pulses[n]);
  }
  const Word scaled = Low(LongShiftRight(LongMultiply(level, 60), 6));
  const Long wanted = LongShiftRight(LongMultiply(scaled, level), 2 * shift + 4);
  const Long excess = MultiplyLong(LongSubtract(energy, wanted), kPulseShare);
  const Word b = MultiplyRounded(High(LongShiftLeft(common, 1)), kPulseShare);
  const Long discriminant = LongSubtract(LongMultiply(b, b), excess);
  Word root = Negate(b);
  if (discriminant > 0) {
    const Word d = SquareRoot(discriminant);
    const Word upper = Subtract(d, b);
    const Word lower = Negate(Add(b, d));
    root = Absolute(upper) <= Absolute(lower) ? upper : lower;
  }
  return std::clamp(ShiftLeft(root, shift + 1), static_cast<Word>(-kMostAmplitude), kMostAmplitude);
}

}  // namespace

Word NoiseLevelOf(unsigned index) noexcept {
  const unsigned segment = std::min(index / kSegmentLength, kSegments - 1);
  return static_cast<Word>(LevelIn(segment, static_cast<int>(index - segment * kSegmentLength))
                           << 5);
}

unsigned NoiseLevelIndex(Long energy) noexcept {
  if (energy >= kSegmentEnds[2]) return kLevels - 1;
  const unsigned segment = energy >= kSegmentEnds[1] ? 2 : energy >= kSegmentEnds[0] ? 1 : 0;
  return segment * kSegmentLength + static_cast<unsigned>(NearestIn(segment, energy));
}

// From 0 on, below a count.
unsigned ComfortNoise::Random(unsigned count) noexcept {
  seed_ = NextRandom(seed_);
  return static_cast<unsigned>(
      Multiply(static_cast<Word>(seed_ & 0x7FFF), static_cast<Word>(count)));
}

// Pulses of half a frame, at different places of a grid. @param bits  the grids of both subframes,
// and the signs.
ComfortNoise::Half ComfortNoise::DrawPulses(std::size_t half, unsigned bits) noexcept {
  Half pulses = {};
  unsigned signs = bits >> 2;
  for (std::size_t i = 0; i < kHalves; ++i) {
    std::array<unsigned char, kSubframeSamples / 2> places;
    std::iota(places.begin(), places.end(), static_cast<unsigned char>(0));
    auto left = static_cast<unsigned>(places.size());
    for (std::size_t pulse = 0; pulse < kPulses[2 * half + i]; ++pulse, --left, signs >>= 1) {
      unsigned char& place = places[Random(left)];
      const std::size_t begin = i * kSubframeSamples + (bits >> i & 1);
      pulses[begin + std::size_t{2} * place] = (signs & 1) != 0 ? kPulse : -kPulse;
      place = places[left - 1];
    }
  }
  return pulses;
}

NoisePitch ComfortNoise::Make(bool isFirst, Word* excitation) noexcept {
  current_ = isFirst ? level_ : High(MultiplyAdd(LongMultiply(current_, 0x7000), level_, 0x1000));
  const int firstLag = 123 + static_cast<int>(Random(21));
  const int secondLag = 123 + static_cast<int>(Random(19));
  NoisePitch pitch = {.lags = {firstLag, firstLag - 1, secondLag, secondLag + 2}, .rows = {}};
  for (unsigned& row : pitch.rows) row = 1 + Random(50);
  unsigned bits[kHalves];
  for (unsigned& half : bits) half = Random(8192);
  const std::array<Half, kHalves> pulses = {DrawPulses(0, bits[0]), DrawPulses(1, bits[1])};

  for (std::size_t half = 0; half < kHalves; ++half) {
    Word* const begin = excitation + half * kHalfSamples;
    // The lags are long enough for both subframes to be made of what is before the first.
    for (std::size_t i = 2 * half; i < 2 * half + 2; ++i) {
      Word* const subframe = excitation + i * kSubframeSamples;
      const Subframe vector =
          AdaptiveVector(SamplesOfLag(pitch.lags[i], subframe), PitchGains(false, pitch.rows[i]));
      std::ranges::copy(vector, subframe);
    }
    const Word amplitude = AmplitudeOf(begin, pulses[half].data(), current_);
    for (std::size_t n = 0; n < kHalfSamples; ++n) {
      begin[n] = Add(begin[n], Multiply(amplitude, pulses[half][n]));
    }
  }
  return pitch;
}

}  // namespace Quorvex::g723_1
