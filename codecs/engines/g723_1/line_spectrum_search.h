// From a filter to the line spectrum that is sent.
#pragma once

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g723_1/frame.h"

namespace Quorvex::g723_1 {

/// @param last  the last frame's, as it was sent: taken where the filter has no spectrum.
LineSpectrum SpectrumOf(const Filter& filter, const LineSpectrum& last) noexcept;
/// The index, 24 bits, of the spectrum that comes nearest.
unsigned QuantizeSpectrum(const LineSpectrum& spectrum, const LineSpectrum& last) noexcept;

}  // namespace Quorvex::g723_1
