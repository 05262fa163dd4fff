// The pitch of a frame, roughly, from its weighted speech.
#pragma once

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g729a/frame.h"

namespace Quorvex::g729a {

/// The lag around which the subframes' lags are looked for.
/// @param weighted  the frame, with kMostLag samples before.
int OpenLoopLag(const fixed_point::Word* weighted) noexcept;

}  // namespace Quorvex::g729a
