// What a frame of G.729 is made of.
#pragma once

#include <array>
#include <cstddef>

#include "codecs/engines/fixed_point.h"

namespace Quorvex::g729a {

inline constexpr std::size_t kFrameSamples = 80;  ///< 10 ms at 8 kHz
inline constexpr std::size_t kSubframes = 2;
inline constexpr std::size_t kSubframeSamples = kFrameSamples / kSubframes;
inline constexpr std::size_t kFrameBytes = 10;
inline constexpr std::size_t kOrder = 10;  ///< of the linear prediction

/// Samples from one period of the voice to the next, as an encoder sends them; with thirds, and
/// where frames are lost, one less and one more.
inline constexpr int kLeastLag = 20;
inline constexpr int kMostLag = 143;

/// Samples of the excitation before the frame that a subframe can be made of: the longest lag, and
/// what the interpolation reads beyond.
inline constexpr std::size_t kExcitationHistory = kMostLag + 11;

/// Line spectral frequencies, in radians, Q13; or their cosines, Q15, the first near 1.
using LineSpectrum = std::array<fixed_point::Word, kOrder>;
/// 1 + a1 / z + ... + a10 / z^10, Q12; the first is 4096, or Expand's.
using Filter = std::array<fixed_point::Word, kOrder + 1>;
using Subframe = std::array<fixed_point::Word, kSubframeSamples>;

}  // namespace Quorvex::g729a
