// The decoder of ITU-T G.722.1 at 24 and 32 kbit/s.
#pragma once

#include "codecs/engine.h"

namespace Quorvex {

/// "IPP_G722.1". A frame that is damaged is concealed as an erased one is: the first repeats the
/// spectrum before it, the next are silence.
const SpeechEngine& G7221Engine() noexcept;

}  // namespace Quorvex
