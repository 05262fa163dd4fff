// The filters that take away what is below the voice, before the encoder and behind the decoder.
#pragma once

#include <span>

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g729a/split.h"

namespace Quorvex::g729a {

/// A filter of second order.
struct HighPassCoefficients {
  fixed_point::Word zeros[3];
  fixed_point::Word poles[2];  ///< signs ready for adding
};

class HighPass {
 public:
  /// Below 140 Hz, and the level halved: of the encoder. In place.
  void FilterInput(std::span<fixed_point::Word> samples) noexcept;
  /// Below 100 Hz, and the level doubled: of the decoder. In place.
  void FilterOutput(std::span<fixed_point::Word> samples) noexcept;

 private:
  fixed_point::Long Next(const HighPassCoefficients& coefficients, int shift,
                         fixed_point::Word sample) noexcept;

  Split output1_, output2_;
  fixed_point::Word input1_ = 0, input2_ = 0;
};

}  // namespace Quorvex::g729a
