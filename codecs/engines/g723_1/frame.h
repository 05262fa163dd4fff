// What a frame of G.723.1 is made of.
#pragma once

#include <array>
#include <cstddef>

#include "codecs/engines/fixed_point.h"

namespace Quorvex::g723_1 {

inline constexpr std::size_t kFrameSamples = 240;  ///< 30 ms at 8 kHz
inline constexpr std::size_t kSubframes = 4;
inline constexpr std::size_t kSubframeSamples = kFrameSamples / kSubframes;
inline constexpr std::size_t kHalves = 2;  ///< of a frame, which have a lag each
inline constexpr std::size_t kHalfSamples = kFrameSamples / kHalves;
inline constexpr std::size_t kOrder = 10;  ///< of the linear prediction

/// Samples from one period of the voice to the next, as they are sent for half a frame.
inline constexpr int kLeastLag = 18;
inline constexpr int kMostLag = 142;
/// Half a frame has short lags below this.
inline constexpr int kShortLagEnd = 58;

/// Samples of the excitation before the frame that it can be made of: the longest lag, and what the
/// five taps read beyond.
inline constexpr std::size_t kExcitationHistory = 145;

/// bit/s.
inline constexpr int kLowRate = 5300;
inline constexpr int kHighRate = 6300;

/// Line spectral frequencies, Q15, where 0x8000 is 4 kHz.
using LineSpectrum = std::array<fixed_point::Word, kOrder>;
/// What a sample is predicted to be: a1 of the one before + ... + a10 of the tenth before, Q13.
using Filter = std::array<fixed_point::Word, kOrder>;
using Filters = std::array<Filter, kSubframes>;
using Subframe = std::array<fixed_point::Word, kSubframeSamples>;

}  // namespace Quorvex::g723_1
