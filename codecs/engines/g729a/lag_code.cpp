#include "codecs/engines/g729a/lag_code.h"

#include <algorithm>

namespace Quorvex::g729a {
namespace {

// Indices from here on are of whole lags, so much less.
constexpr int kFirstWhole = 197;
constexpr int kWholeOffset = 112;

}  // namespace

Lag FirstLag(unsigned index) noexcept {
  const int i = static_cast<int>(index);
  if (i >= kFirstWhole) return {i - kWholeOffset, 0};
  const int samples = (i + 2) / 3 + 19;
  return {samples, i - 3 * samples + 58};
}

unsigned FirstIndex(Lag lag) noexcept {
  const bool isWhole = lag.samples + kWholeOffset >= kFirstWhole;
  return static_cast<unsigned>(isWhole ? lag.samples + kWholeOffset
                                       : 3 * lag.samples - 58 + lag.thirds);
}

Lag SecondLag(unsigned index, int least) noexcept {
  const int i = static_cast<int>(index);
  const int samples = (i + 2) / 3 - 1;
  return {least + samples, i - 2 - 3 * samples};
}

unsigned SecondIndex(Lag lag, int least) noexcept {
  return static_cast<unsigned>(3 * (lag.samples - least) + 2 + lag.thirds);
}

int LeastSecondLag(int firstLag) noexcept { return std::clamp(firstLag - 5, kLeastLag, 134); }

}  // namespace Quorvex::g729a
