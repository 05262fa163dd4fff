#include "codecs/engines/g729a/lag_code.h"

#include <algorithm>

namespace Quorvex::g729a {
namespace {

// Indices from here on are of whole lags.
constexpr int kFirstWhole = 197;

}  // namespace

Lag FirstLag(unsigned index) noexcept {
  const int i = static_cast<int>(index);
  if (i >= kFirstWhole) return {i - 112, 0};
  const int samples = (i + 2) / 3 + 19;
  return {samples, i - 3 * samples + 58};
}

Lag SecondLag(unsigned index, int least) noexcept {
  const int i = static_cast<int>(index);
  const int samples = (i + 2) / 3 - 1;
  return {least + samples, i - 2 - 3 * samples};
}

int LeastSecondLag(int firstLag) noexcept { return std::clamp(firstLag - 5, kLeastLag, 134); }

}  // namespace Quorvex::g729a
