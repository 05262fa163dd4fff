// The decoder and the encoder of ITU-T G.729 Annex A at 8 kbit/s.
#pragma once

#include "codecs/engine.h"

namespace Quorvex {

/// "IPP_G729A". An erased frame goes on with the voice before, falling off; it is never muted. The
/// encoder looks 5 ms ahead: what it codes first is 40 samples of silence. Of the modes, there is
/// the post-filter only; the output's high-pass filter stays without it.
const SpeechEngine& G729AEngine() noexcept;

}  // namespace Quorvex
