// Whole lags are compared by the past excitation itself: filtering the target backwards once takes
// the place of filtering each candidate. The best of them is then moved by thirds of a sample.
#include "codecs/engines/g729a/closed_loop_pitch.h"

#include <algorithm>

#include "codecs/engines/g729a/lag_code.h"

namespace Quorvex::g729a {

using namespace fixed_point;

namespace {

constexpr int kMostFirstLagWithThirds = 84;
constexpr Word kMostPitchGain = 19661;  // 1.2

// How many whole lags are tried in each subframe.
constexpr int kFirstLags = 7;
constexpr int kSecondLags = 10;

int BestWholeLag(int least, int count, const Correlator& backward,
                 const Word* excitation) noexcept {
  int best = least;
  Long most = kLeastLong;
  for (int lag = least; lag < least + count; ++lag) {
    const Long likeness = backward.With(excitation - lag).value;
    if (likeness > most) {
      most = likeness;
      best = lag;
    }
  }
  return best;
}

// Tries what is a third before and after a whole lag, whose excitation is there already. Leaves
// the excitation of the best.
int BestThird(Lag lag, const Correlator& backward, Word* excitation) noexcept {
  int best = 0;
  Long most = backward.With(excitation).value;
  Subframe kept;
  std::copy_n(excitation, kSubframeSamples, kept.begin());
  for (const int thirds : {-1, 1}) {
    RepeatExcitation({lag.samples, thirds}, excitation);
    const Long likeness = backward.With(excitation).value;
    if (likeness <= most) continue;
    most = likeness;
    best = thirds;
    std::copy_n(excitation, kSubframeSamples, kept.begin());
  }
  std::ranges::copy(kept, excitation);
  return best;
}

// Stands for a vector whose sums saturate.
Subframe Quarter(const Subframe& samples) noexcept {
  Subframe quarter;
  std::ranges::transform(samples, quarter.begin(),
                         [](Word sample) { return ShiftRight(sample, 2); });
  return quarter;
}

Scaled EnergyOf(const Subframe& filtered) noexcept {
  const Sum sum = Correlator(filtered).With(filtered, 1);
  if (!sum.saturated) return Normalize(sum.value);
  const Subframe quarter = Quarter(filtered);
  Scaled energy = Normalize(Correlator(quarter).With(quarter, 1).value);
  energy.shift -= 4;
  return energy;
}

Scaled LikenessOf(const Subframe& target, const Subframe& filtered) noexcept {
  const Sum sum = Correlator(target).With(filtered);
  if (!sum.saturated) return Normalize(sum.value);
  Scaled likeness = Normalize(Correlator(target).With(Quarter(filtered)).value);
  likeness.shift -= 2;
  return likeness;
}

}  // namespace

CodedLag SearchFirstLag(int openLoopLag, const Subframe& backward, Word* excitation) noexcept {
  const Correlator correlator(backward);
  const int least = std::clamp(openLoopLag - kFirstLags / 2, kLeastLag, kMostLag + 1 - kFirstLags);
  Lag lag{.samples = BestWholeLag(least, kFirstLags, correlator, excitation)};
  RepeatExcitation(lag, excitation);
  if (lag.samples <= kMostFirstLagWithThirds) lag.thirds = BestThird(lag, correlator, excitation);
  return {lag, FirstIndex(lag)};
}

CodedLag SearchSecondLag(int firstLag, const Subframe& backward, Word* excitation) noexcept {
  const Correlator correlator(backward);
  const int least = LeastSecondLag(firstLag);
  Lag lag{.samples = BestWholeLag(least, kSecondLags, correlator, excitation)};
  RepeatExcitation(lag, excitation);
  lag.thirds = BestThird(lag, correlator, excitation);
  return {lag, SecondIndex(lag, least)};
}

PitchGain SearchPitchGain(const Subframe& target, const Subframe& filtered) noexcept {
  PitchGain pitch{.energy = EnergyOf(filtered), .likeness = LikenessOf(target, filtered)};
  if (pitch.likeness.value <= 0) {
    pitch.likeness.shift = 30;  // makes it next to nothing in the search of the gains
    return pitch;
  }
  // Half the likeness is below the energy, which has its upper bit in use.
  const Word quotient = Divide(ShiftRight(pitch.likeness.value, 1), pitch.energy.value);
  const int shift = pitch.likeness.shift - pitch.energy.shift;
  pitch.gain = std::min(ShiftRight(quotient, shift), kMostPitchGain);
  return pitch;
}

}  // namespace Quorvex::g729a
