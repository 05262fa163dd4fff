// Keeps the pitch gain down where an error in the decoder's excitation, from bits that were lost,
// would grow from period to period.
#pragma once

#include <array>

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g729a/excitation.h"

namespace Quorvex::g729a {

/// The greatest pitch gain where it is held down, Q14: 0.95.
inline constexpr fixed_point::Word kTamedPitchGain = 15564;

class Taming {
 public:
  /// Whether the excitation of a lag before is one that no gain above kTamedPitchGain may repeat.
  bool Holds(Lag lag) const noexcept;
  /// After a subframe. @param pitchGain  Q14, as it was quantised.
  void Update(int lag, fixed_point::Word pitchGain) noexcept;

 private:
  /// The worst error that could have grown in the excitation, Q14, by how many subframes ago.
  std::array<fixed_point::Long, 4> errors_ = {0x4000, 0x4000, 0x4000, 0x4000};
};

}  // namespace Quorvex::g729a
