// What a frame of G.722.1 is made of.
#pragma once

#include <array>

#include "codecs/engines/fixed_point.h"

namespace Quorvex::g722_1 {

inline constexpr int kFrameSamples = 320;  ///< 20 ms at 16 kHz
inline constexpr int kRegions = 14;        ///< of 500 Hz; what is above 7 kHz is zero
inline constexpr int kRegionSize = 20;     ///< coefficients
inline constexpr int kMostFrameBytes = 80;

using Samples = std::array<fixed_point::Word, kFrameSamples>;

/// Of each region. A power is in steps of 3 dB, 0 standing for a standard deviation of 1.
using Powers = std::array<int, kRegions>;
/// How coarse each region's quantiser is: 0 the finest, 6 the coarsest, 7 sends nothing.
using Categories = std::array<int, kRegions>;

inline constexpr int kNoVectors = 7;  ///< the last category

/// One frame of the modulated lapped transform.
struct Spectrum {
  Samples coefficients{};
  int magnitudeShift = 0;  ///< the coefficients are so many bits too large, -1 to 9
};

}  // namespace Quorvex::g722_1
