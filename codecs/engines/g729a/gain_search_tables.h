// Constants of the preselection of gains, from ITU-T G.729.
#pragma once

#include <array>
#include <cstddef>

#include "codecs/engines/fixed_point.h"

namespace Quorvex::g729a {

/// The rows of each gain codebook lie near a line: factor = slope x pitch gain + offset. Steep in
/// the first, flat in the second.
inline constexpr fixed_point::Word kFirstSlope = 31881;        ///< Q10: 31.13
inline constexpr fixed_point::Word kSecondSlope = 31548;       ///< Q16: 0.4814
inline constexpr fixed_point::Long kFirstOffset = 1731217536;  ///< Q30: 1.612
inline constexpr fixed_point::Long kBothOffsets = 1822990272;  ///< Q35: 0.05306
/// 1 / (second slope - first slope), Q19.
inline constexpr fixed_point::Word kInverseSlope = -17103;

/// How many rows of each codebook are tried; they lie side by side.
inline constexpr std::size_t kFirstTried = 4;
inline constexpr std::size_t kSecondTried = 8;

/// Past how many of these the best gains are, so many rows are left out at the beginning: factors
/// of the first codebook, Q14, and pitch gains of the second, Q15.
inline constexpr std::array<fixed_point::Word, 4> kFirstLimits = {10808, 12374, 19778, 32567};
inline constexpr std::array<fixed_point::Word, 8> kSecondLimits = {14087, 16188, 20274, 21321,
                                                                   23525, 25232, 27873, 30542};

}  // namespace Quorvex::g729a
