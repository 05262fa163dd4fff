// The formant post-filter: makes the voice's formants stand out from the coding noise, at the level
// that they had.
#pragma once

#include <array>

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g723_1/frame.h"

namespace Quorvex::g723_1 {

class PostFilter {
 public:
  /// @param filter    of the subframe's synthesis.
  /// @param speech    a subframe at half scale, with kOrder samples before.
  /// @param filtered  receives the subframe at full scale.
  void Filter(const g723_1::Filter& filter, const fixed_point::Word* speech,
              fixed_point::Word* filtered) noexcept;

 private:
  fixed_point::Word NextTilt(fixed_point::Long energy, fixed_point::Long next) noexcept;
  void SharpenFormants(const g723_1::Filter& filter, fixed_point::Word tilt,
                       const fixed_point::Word* speech, fixed_point::Word* filtered) noexcept;
  void ControlLevel(fixed_point::Long target, fixed_point::Word* filtered) noexcept;

  std::array<fixed_point::Word, kOrder> poles_ = {};  // output of the poles, the newest last
  fixed_point::Word reflection_ = 0;                  // smoothed, Q15
  fixed_point::Word gain_ = 0x1000;                   // Q12
};

}  // namespace Quorvex::g723_1
