// Windowing, and the overlap of each frame with the one before.
#pragma once

#include <array>

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g722_1/frame.h"

namespace Quorvex::g722_1 {

class Overlap {
 public:
  /// @param transformed  of the inverse transform
  /// @param samples      receives as many
  void Add(const Samples& transformed, short* samples) noexcept;

 private:
  std::array<fixed_point::Word, kFrameSamples / 2> kept_{};
};

}  // namespace Quorvex::g722_1
