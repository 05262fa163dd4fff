// A 32-bit number as two 16-bit ones, and products with it that need no 64 bits: the double
// precision of ITU-T G.729.
#pragma once

#include "codecs/engines/fixed_point.h"

namespace Quorvex::g729a {

/// high x 2^16 + low x 2, low from 0 to 32767: the last bit is lost.
struct Split {
  fixed_point::Word high = 0;
  fixed_point::Word low = 0;
};

constexpr Split SplitUp(fixed_point::Long value) noexcept {
  return {fixed_point::High(value), static_cast<fixed_point::Word>((value >> 1) & 0x7FFF)};
}
constexpr fixed_point::Long Join(Split value) noexcept {
  return fixed_point::MultiplyAdd(fixed_point::Deposit(value.high), value.low, 1);
}

/// Q31 x Q15 and Q31 x Q31 to Q31. The products of low halves are left out or rounded down.
constexpr fixed_point::Long SplitMultiply(Split a, fixed_point::Word b) noexcept {
  return fixed_point::MultiplyAdd(fixed_point::LongMultiply(a.high, b),
                                  fixed_point::Multiply(a.low, b), 1);
}
constexpr fixed_point::Long SplitMultiply(Split a, Split b) noexcept {
  const fixed_point::Long upper = fixed_point::MultiplyAdd(
      fixed_point::LongMultiply(a.high, b.high), fixed_point::Multiply(a.high, b.low), 1);
  return fixed_point::MultiplyAdd(upper, fixed_point::Multiply(a.low, b.high), 1);
}

}  // namespace Quorvex::g729a
