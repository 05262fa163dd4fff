// The engine of ITU-T G.722 at 64, 56 and 48 kbit/s: 7 kHz audio in two bands of ADPCM.
#pragma once

#include "codecs/engine.h"

namespace Quorvex {

/// "IPP_G722". A frame is 10 ms: the codec itself has none. An erased frame is silence: the codec
/// has no concealment either.
const SpeechEngine& G722Engine() noexcept;

}  // namespace Quorvex
