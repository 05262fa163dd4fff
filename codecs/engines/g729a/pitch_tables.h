// The interpolation between samples of the excitation, from ITU-T G.729.
#pragma once

#include <array>
#include <cstddef>

#include "codecs/engines/fixed_point.h"

namespace Quorvex::g729a {

/// Half of a symmetric filter of 61 coefficients at thirds of a sample, Q15.
inline constexpr std::array<fixed_point::Word, 31> kInterpolation = {
    29443, 25207, 14701, 3143, -4402, -5850, -2783, 1211, 3130, 2259, 0,
    -1652, -1666, -464,  756,  1099,  550,   -245,  -634, -451, 0,    308,
    296,   78,    -120,  -165, -79,   34,    91,    70,   0};

}  // namespace Quorvex::g729a
