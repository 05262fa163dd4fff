// Keeps the pitch gains down where an error in the decoder's excitation, from bits that were lost,
// would grow from period to period.
#pragma once

#include <array>

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g723_1/frame.h"

namespace Quorvex::g723_1 {

class Taming {
 public:
  /// How many rows of pitch gains may be used: the first so many of kShortLagGains and of
  /// kPitchGains.
  struct Rows {
    unsigned shortLag;
    unsigned others;
  };
  /// @param leastLag, mostLag  of those that are tried. @param isSine  is held down most.
  Rows Allowed(int leastLag, int mostLag, bool isSine) const noexcept;
  /// After a subframe. @param lag  the subframe's own.
  void Update(int lag, bool hasShortLagGains, unsigned row) noexcept;

 private:
  /// The worst error that could have grown, by zones of 30 samples into the past.
  std::array<fixed_point::Long, 5> errors_ = {4, 4, 4, 4, 4};
};

}  // namespace Quorvex::g723_1
