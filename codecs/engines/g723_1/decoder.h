// The decoder of ITU-T G.723.1.
#pragma once

#include <array>
#include <cstddef>

#include "codecs/engine.h"
#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g723_1/frame.h"

namespace Quorvex::g723_1 {

class Decoder {
 public:
  void Start(const EngineModes& modes) noexcept {
    *this = Decoder();
    SetModes(modes);
  }
  void SetModes(const EngineModes& modes) noexcept { modes_ = modes; }
  int BitRate() const noexcept { return modes_.bitRate; }

  void Decode(const CodedFrame& frame, short* samples) noexcept;

 private:
  EngineModes modes_;
};

}  // namespace Quorvex::g723_1
