// A few numbers stand for the past excitation, zone by zone. Half a subframe that repeats some of
// it takes over the worst error there, times the gain with which it does so.
#include "codecs/engines/g723_1/taming.h"

#include <algorithm>
#include <cstddef>

#include "codecs/engines/g723_1/arithmetic.h"
#include "codecs/engines/g723_1/taming_tables.h"

namespace Quorvex::g723_1 {

using namespace fixed_point;

namespace {

constexpr int kZoneSamples = 30;
constexpr Long kOwnError = 4;
constexpr Long kMostError = 0x40000000;

// Of samples so far back, from 1 on.
std::size_t ZoneOf(int lag) noexcept { return static_cast<std::size_t>((lag - 1) / kZoneSamples); }

}  // namespace

Taming::Rows Taming::Allowed(int leastLag, int mostLag, bool isSine) const noexcept {
  constexpr Rows kFewest = {51, 93};
  if (isSine) return kFewest;
  const std::size_t first = ZoneOf(std::max(1, leastLag - 2 * kZoneSamples - 1));
  const std::size_t last = ZoneOf(mostLag + 2);
  const Long worst = *std::max_element(&errors_[first], &errors_[last] + 1);
  if (worst > kMostError) return kFewest;
  const auto more = static_cast<unsigned>((kMostError - worst) >> 23);
  return {std::min<unsigned>(kFewest.shortLag + 4 * more, kShortLagGrowth.size()),
          std::min<unsigned>(kFewest.others + 8 * more, kGrowth.size())};
}

void Taming::Update(int lag, bool hasShortLagGains, unsigned row) noexcept {
  const Word growth = hasShortLagGains ? kShortLagGrowth[row] : kGrowth[row];
  const auto grown = [this, growth](std::size_t zone) {
    return LongAdd(kOwnError, LongShiftLeft(MultiplyLong(errors_[zone], growth), 2));
  };
  const auto worstOf = [&grown](std::size_t zone) {
    return std::max(grown(zone), grown(zone + 1));
  };
  // Of the later half, and of the earlier one.
  Long later = 0;
  Long earlier = 0;
  const std::size_t zone = ZoneOf(lag);
  if (lag <= kZoneSamples) {
    later = earlier = grown(0);
  } else if (lag % kZoneSamples == 0) {
    later = grown(zone - 1);
    earlier = grown(zone);
  } else if (zone == 1) {
    later = earlier = worstOf(0);
  } else {
    later = worstOf(zone - 2);
    earlier = worstOf(zone - 1);
  }
  std::shift_right(errors_.begin(), errors_.end(), 2);
  errors_[0] = later;
  errors_[1] = earlier;
}

}  // namespace Quorvex::g723_1
