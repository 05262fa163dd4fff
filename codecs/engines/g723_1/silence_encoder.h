// What is sent of the frames in which nobody speaks.
#pragma once

#include <array>
#include <cstddef>

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g723_1/comfort_noise.h"
#include "codecs/engines/g723_1/frame.h"
#include "codecs/engines/g723_1/frame_bits.h"
#include "codecs/engines/g723_1/linear_prediction.h"

namespace Quorvex::g723_1 {

class SilenceEncoder {
 public:
  /// To be called for every frame, also of speech, before Encode.
  void Add(const std::array<Autocorrelation, kSubframes>& windows) noexcept;
  /// To be called after every frame of speech.
  void Restart() noexcept;
};

}  // namespace Quorvex::g723_1
