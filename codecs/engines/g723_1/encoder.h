// The encoder of ITU-T G.723.1 at 5.3 and 6.3 kbit/s:
//
//     samples -> high-pass -> four windows -> filters -> line spectrum of the last -> quantiser
//                    |                           |
//         frame, 60 samples back -> perceptual weighting -> open-loop pitch of each half
//                                                |
//             each subframe -> lag, pitch gains and pulses that come nearest to it
//
// Where nobody speaks, and the mode is on, the noise is coded instead.
#pragma once

#include <array>
#include <cstddef>

#include "codecs/engine.h"
#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g723_1/frame.h"
#include "codecs/engines/g723_1/high_pass.h"

namespace Quorvex::g723_1 {

class Encoder {
 public:
  void Start(const EngineModes& modes) noexcept {
    *this = Encoder();
    SetModes(modes);
  }
  void SetModes(const EngineModes& modes) noexcept { modes_ = modes; }

  /// @param samples  kFrameSamples. @param data  receives kMostFrameBytes at most.
  /// @return the length of the frame.
  std::size_t Encode(const short* samples, unsigned char* data) noexcept;

 private:
  EngineModes modes_;
  HighPass highPass_;
};

}  // namespace Quorvex::g723_1
