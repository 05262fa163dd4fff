// Thresholds of the voice activity detection, from ITU-T G.723.1.
#pragma once

#include <array>

#include "codecs/engines/fixed_point.h"

namespace Quorvex::g723_1 {

/// How much louder than the noise a voice is, by the exponent of the noise, Q12.
inline constexpr std::array<fixed_point::Word, 11> kThresholds = {
    9170, 9170, 9170, 9170, 10289, 11544, 12953, 14533, 16306, 18296, 20529};

}  // namespace Quorvex::g723_1
