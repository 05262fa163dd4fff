// What the categorisation counts by, from ITU-T G.722.1.
#pragma once

#include <array>

namespace Quorvex::g722_1 {

/// Bits that a region of each category is expected to take.
inline constexpr std::array<int, 8> kExpectedBits = {52, 47, 43, 37, 29, 22, 16, 0};

}  // namespace Quorvex::g722_1
