// The post-filter: makes the voice's harmonics and formants stand out from the coding noise.
#pragma once

#include <array>

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g729a/frame.h"

namespace Quorvex::g729a {

class PostFilter {
 public:
  /// @param filter  of the subframe's synthesis. @param lag  its whole part.
  /// @param speech  a subframe, with kOrder samples before.
  /// @param filtered  receives a subframe.
  void Filter(const g729a::Filter& filter, int lag, const fixed_point::Word* speech,
              fixed_point::Word* filtered) noexcept;

 private:
  void ControlLevel(const fixed_point::Word* speech, fixed_point::Word* filtered) noexcept;

  std::array<fixed_point::Word, kMostLag + kSubframeSamples> residual_{};  // history, subframe
  std::array<fixed_point::Word, kOrder + kSubframeSamples> output_{};      // before the level
  fixed_point::Word last_ = 0;     // sample before the tilt is taken away
  fixed_point::Word gain_ = 4096;  // Q12
};

}  // namespace Quorvex::g729a
