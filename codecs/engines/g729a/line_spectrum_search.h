// From a filter to its line spectrum.
#pragma once

#include "codecs/engines/g729a/frame.h"

namespace Quorvex::g729a {

/// The cosines of a filter's line spectrum. @param before  those of the frame before: they stand
/// again if not all are found.
LineSpectrum SearchCosines(const Filter& filter, const LineSpectrum& before) noexcept;

/// @param cosines  falling.
LineSpectrum FrequenciesOf(const LineSpectrum& cosines) noexcept;

}  // namespace Quorvex::g729a
