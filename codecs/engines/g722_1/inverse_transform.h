// The inverse transform: a DCT-IV of 320 points.
#pragma once

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g722_1/frame.h"

namespace Quorvex::g722_1 {

/// @param spectrum  its coefficients within +-16000
void InverseTransform(const Spectrum& spectrum, Samples& output) noexcept;

/// InverseTransform in plain code.
void InverseTransformPlain(const Spectrum& spectrum, Samples& output) noexcept;

/// InverseTransform with the vector instructions that every processor of the build's kind has.
/// @param coefficients, output  kFrameSamples each
/// @return false, with the output left alone, where there are no such instructions or a sum might
///         saturate on the way.
bool InverseTransformVector(const fixed_point::Word* coefficients, int magnitudeShift,
                            fixed_point::Word* output) noexcept;

}  // namespace Quorvex::g722_1
