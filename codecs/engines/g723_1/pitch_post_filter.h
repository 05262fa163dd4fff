// The pitch post-filter: strengthens the voice by what the excitation was a period before, or will
// be a period later, within the frame.
#pragma once

#include <array>

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g723_1/frame.h"

namespace Quorvex::g723_1 {

/// How much of the other period is taken at most, Q15: from ITU-T G.723.1.
inline constexpr fixed_point::Word kPitchWeightAtHighRate = 6144;
inline constexpr fixed_point::Word kPitchWeightAtLowRate = 8192;

/// Filters the excitation of a frame.
/// @param excitation  begin of the frame, with kExcitationHistory samples before.
/// @param normalized  the same place in the normalised copy of both (arithmetic.h).
/// @param halfLags    as they are sent.
/// @param weight      of the frame's rate.
/// @param filtered    receives kFrameSamples; not the excitation itself.
void FilterPitch(const fixed_point::Word* excitation, const fixed_point::Word* normalized,
                 const std::array<int, kHalves>& halfLags, fixed_point::Word weight,
                 fixed_point::Word* filtered) noexcept;

}  // namespace Quorvex::g723_1
