// Formant filters, from ITU-T G.723.1: what the coefficients of the prediction are weighted with.
#pragma once

#include <array>

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g723_1/frame.h"

namespace Quorvex::g723_1 {

/// The perceptual weighting, Q15: 0.9^i and 0.5^i.
inline constexpr Filter kWeightingZeros = {29491, 26542, 23888, 21499, 19349,
                                           17414, 15673, 14106, 12695, 11425};
inline constexpr Filter kWeightingPoles = {16384, 8192, 4096, 2048, 1024, 512, 256, 128, 64, 32};

/// The post-filter, Q15: 0.65^i and 0.75^i.
inline constexpr Filter kPostFilterZeros = {21299, 13844, 8999, 5849, 3802,
                                            2471,  1606,  1044, 679,  441};
inline constexpr Filter kPostFilterPoles = {24576, 18432, 13824, 10368, 7776,
                                            5832,  4374,  3281,  2460,  1845};

}  // namespace Quorvex::g723_1
