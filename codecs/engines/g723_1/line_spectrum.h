// Line spectra: from what is sent to the filters of the subframes.
#pragma once

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g723_1/frame.h"

namespace Quorvex::g723_1 {

/// How much of the last spectrum's distance from the mean is expected, Q15.
inline constexpr fixed_point::Word kSpectrumPrediction = 12288;

/// @param index  24 bits, as sent. @param last  the spectrum of the frame before.
LineSpectrum DecodeSpectrum(unsigned index, const LineSpectrum& last) noexcept;
/// For a frame that was lost: back towards the mean.
LineSpectrum RepeatSpectrum(const LineSpectrum& last) noexcept;

/// 1 / (1 - filter) has this spectrum.
Filter FilterOf(const LineSpectrum& spectrum) noexcept;
/// From the last frame's spectrum to this one's, which the last subframe has.
Filters FiltersBetween(const LineSpectrum& last, const LineSpectrum& spectrum) noexcept;

}  // namespace Quorvex::g723_1
