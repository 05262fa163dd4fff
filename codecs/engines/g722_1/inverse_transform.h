// The inverse transform: a DCT-IV of 320 points.
#pragma once

#include "codecs/engines/g722_1/frame.h"

namespace Quorvex::g722_1 {

/// @param spectrum  its coefficients within +-16000
void InverseTransform(const Spectrum& spectrum, Samples& output) noexcept;

}  // namespace Quorvex::g722_1
