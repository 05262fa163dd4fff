// Four numbers stand for four subframes of excitation. A subframe that repeats some of them with a
// gain takes over the worst of their errors, times that gain.
#include "codecs/engines/g729a/taming.h"

#include <algorithm>
#include <cstddef>

#include "codecs/engines/g729a/split.h"

namespace Quorvex::g729a {

using namespace fixed_point;

namespace {

constexpr Long kMostError = 983'040'000;  // 60000
constexpr Long kOwnError = 0x4000;        // 1

// How far the interpolation between samples reaches to both sides of a lag.
constexpr int kReach = 10;

std::size_t ZoneOf(int lag) noexcept { return static_cast<std::size_t>(lag) / kSubframeSamples; }

Long Grow(Long error, Word pitchGain) noexcept {
  return LongAdd(kOwnError, LongShiftLeft(SplitMultiply(SplitUp(error), pitchGain), 1));
}

}  // namespace

bool Taming::Holds(Lag lag) const noexcept {
  const int nearest = lag.samples + (lag.thirds > 0 ? 1 : 0);
  constexpr int kSubframe = static_cast<int>(kSubframeSamples);
  const std::size_t first = ZoneOf(std::max(0, nearest - kSubframe - kReach));
  const std::size_t last = ZoneOf(nearest + kReach - 2);
  return std::any_of(&errors_[first], &errors_[last] + 1,
                     [](Long error) { return error > kMostError; });
}

void Taming::Update(int lag, Word pitchGain) noexcept {
  constexpr int kSubframe = static_cast<int>(kSubframeSamples);
  Long worst = -1;
  if (lag < kSubframe) {
    // The subframe repeats itself, too.
    const Long once = Grow(errors_[0], pitchGain);
    worst = std::max(once, Grow(once, pitchGain));
  } else {
    for (std::size_t zone = ZoneOf(lag - kSubframe); zone <= ZoneOf(lag - 1); ++zone) {
      worst = std::max(worst, Grow(errors_[zone], pitchGain));
    }
  }
  std::shift_right(errors_.begin(), errors_.end(), 1);
  errors_[0] = worst;
}

}  // namespace Quorvex::g729a
