// The decoder and the encoder of ITU-T G.723.1 at 5.3 and 6.3 kbit/s.
#pragma once

#include "codecs/engine.h"

namespace Quorvex {

/// "IPP_G723.1". Frames tell their own rate, and silence its frames of 4 bytes and 1 byte: the bit
/// rate is the encoder's, and the mode of a decoder only in name.
const SpeechEngine& G7231Engine() noexcept;

}  // namespace Quorvex
