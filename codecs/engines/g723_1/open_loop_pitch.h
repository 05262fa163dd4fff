// The lag at which the weighted samples repeat themselves best.
#pragma once

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g723_1/frame.h"

namespace Quorvex::g723_1 {

/// @param samples  half a frame of the weighted samples' normalised copy, with kExcitationHistory
///                 before. @return kLeastLag to kMostLag.
int OpenLoopLag(const fixed_point::Word* samples) noexcept;

}  // namespace Quorvex::g723_1
