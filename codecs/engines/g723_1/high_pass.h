// What is before the encoder: half the level, and nothing below the voice.
#pragma once

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g723_1/frame.h"

namespace Quorvex::g723_1 {

class HighPass {
 public:
  /// @param samples   kFrameSamples. @param isOn  else the level is halved only.
  /// @param filtered  receives kFrameSamples.
  void Filter(const short* samples, bool isOn, fixed_point::Word* filtered) noexcept;

 private:
  fixed_point::Word last_ = 0;
  fixed_point::Long output_ = 0;
};

}  // namespace Quorvex::g723_1
