// The search for the indices of the line spectral frequencies.
#pragma once

#include "codecs/engines/g729a/frame.h"
#include "codecs/engines/g729a/lsf_predictor.h"

namespace Quorvex::g729a {

/// What to send of a frame. @param predictor  as it is after the frame before; Decode of the
/// result brings it on.
LSFIndices SearchLSF(const LineSpectrum& frequencies, const LSFPredictor& predictor) noexcept;

}  // namespace Quorvex::g729a
