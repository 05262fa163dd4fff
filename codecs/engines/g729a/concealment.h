// What stands for the parameters of a frame that was lost.
#pragma once

#include <algorithm>
#include <cstdint>

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g729a/frame.h"

namespace Quorvex::g729a {

/// Pulses at random.
class RandomPulses {
 public:
  unsigned Positions() noexcept { return Next() & 0x1FFF; }
  unsigned Signs() noexcept { return Next() & 0xF; }

 private:
  unsigned Next() noexcept {
    seed_ = static_cast<std::uint16_t>(seed_ * 31821U + 13849U);
    return seed_;
  }

  std::uint16_t seed_ = 21845;
};

/// The lag before, a little longer each time.
constexpr int LongerLag(int lag) noexcept { return lag < kMostLag ? lag + 1 : kMostLag; }

/// The gains fall from subframe to subframe, the fixed codebook's more slowly. The pitch gain is
/// Q14, yet the standard holds it as if it were Q15: to 1.8, not to 0.9.
constexpr fixed_point::Word FallingPitchGain(fixed_point::Word gain) noexcept {
  constexpr fixed_point::Word kFactor = 29491;
  return std::min(fixed_point::Multiply(gain, kFactor), kFactor);
}
constexpr fixed_point::Word FallingCodeGain(fixed_point::Word gain) noexcept {
  return fixed_point::Multiply(gain, 32111);
}

}  // namespace Quorvex::g729a
