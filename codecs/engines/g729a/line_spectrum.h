// Line spectra, and the filters that they stand for.
#pragma once

#include "codecs/engines/g729a/frame.h"

namespace Quorvex::g729a {

LineSpectrum CosinesOf(const LineSpectrum& frequencies) noexcept;
Filter FilterOf(const LineSpectrum& cosines) noexcept;
/// Of the first subframe: the mean of the frames' cosines.
LineSpectrum Between(const LineSpectrum& before, const LineSpectrum& now) noexcept;

}  // namespace Quorvex::g729a
