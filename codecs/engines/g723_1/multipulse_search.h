// The pulses of a subframe at 6.3 kbit/s.
#pragma once

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g723_1/frame.h"
#include "codecs/engines/g723_1/frame_bits.h"

namespace Quorvex::g723_1 {

/// @param target    what the pitch left. @param response  of the weighted synthesis.
/// @param halfLag   of the half that the subframe is in, as it is sent.
/// @param indices   receives all but the row of pitch gains.
void SearchMultipulse(std::size_t subframe, int halfLag, const Subframe& target,
                      const Subframe& response, SubframeIndices& indices) noexcept;

}  // namespace Quorvex::g723_1
