// Logarithm, power and inverse root, interpolated between points of a table.
#pragma once

#include "codecs/engines/fixed_point.h"

namespace Quorvex::g729a {

/// A number with its fraction apart.
struct Logarithm {
  fixed_point::Word exponent = 0;  ///< the whole part
  fixed_point::Word fraction = 0;  ///< Q15
};

/// log2 of a number above 0; 0 for others.
Logarithm Log2(fixed_point::Long value) noexcept;
/// 2^exponent, rounded. The exponent's whole part is from 0 to 30.
fixed_point::Long Pow2(Logarithm exponent) noexcept;
/// 2^30 / sqrt(value), and for numbers not above 0 what comes out for 1.
fixed_point::Long InverseRoot(fixed_point::Long value) noexcept;

}  // namespace Quorvex::g729a
