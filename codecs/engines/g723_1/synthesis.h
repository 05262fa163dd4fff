// From the excitation to the speech.
#pragma once

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g723_1/frame.h"

namespace Quorvex::g723_1 {

/// A subframe's excitation through 1 / (1 - filter), at half its level.
/// @param speech  with kOrder samples before; receives the subframe.
void Synthesize(const Filter& filter, const fixed_point::Word* excitation,
                fixed_point::Word* speech) noexcept;

}  // namespace Quorvex::g723_1
