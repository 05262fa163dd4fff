// A vector through the response of the weighted synthesis.
#pragma once

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g723_1/frame.h"

namespace Quorvex::g723_1 {

/// Whether no sum of products of a vector and a response, nor a part of it, comes to a limit.
/// @param vector  kSubframeSamples.
bool ProductsStayBelow(fixed_point::Long limit, const fixed_point::Word* vector,
                       const Subframe& response) noexcept;

/// Sample n is (vector[0] response[n] + ... + vector[n] response[0]) / 2^shift, rounded to the
/// nearest, a half upwards, and saturated. The products have to stay below kSumLimit.
/// @param vector  kSubframeSamples. @param shift  from 1 on.
Subframe Convolve(const fixed_point::Word* vector, const Subframe& response, int shift) noexcept;

}  // namespace Quorvex::g723_1
