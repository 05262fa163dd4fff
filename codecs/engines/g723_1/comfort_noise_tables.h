// The level of comfort noise, from ITU-T G.723.1.
#pragma once

#include <array>

#include "codecs/engines/fixed_point.h"

namespace Quorvex::g723_1 {

/// Scale of the energy by how many frames it is the sum of, Q15; first, of what a decoder
/// estimates.
inline constexpr std::array<fixed_point::Word, 4> kEnergyScales = {273, 998, 499, 333};

/// Where the segments of the quantiser end, the last for good.
inline constexpr std::array<fixed_point::Long, 3> kSegmentEnds = {2048, 18432, 231233};

/// First level of each segment.
inline constexpr std::array<fixed_point::Word, 3> kSegmentLevels = {0, 32, 96};

}  // namespace Quorvex::g723_1
