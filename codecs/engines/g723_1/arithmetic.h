// Functions that ITU-T G.723.1 defines with its own rounding.
#pragma once

#include <cstddef>
#include <cstdint>

#include "codecs/engines/fixed_point.h"

namespace Quorvex::g723_1 {

/// Q31 x Q15 to Q31: the product of the lower half is rounded down by itself.
constexpr fixed_point::Long MultiplyLong(fixed_point::Long a, fixed_point::Word b) noexcept {
  const fixed_point::Long lower = (a & 0xFFFF) * b;  // of 16 bits without a sign
  return fixed_point::MultiplyAdd(lower >> 15, b, fixed_point::High(a));
}

/// MultiplyRounded for an a of 15 bits. From halves of the product, which vector instructions make
/// more of at a time than of whole ones.
constexpr fixed_point::Word MultiplyRoundedNarrow(fixed_point::Word a,
                                                  fixed_point::Word b) noexcept {
  const auto twice = static_cast<fixed_point::Word>(2 * a);
  const auto upper = static_cast<fixed_point::Word>((twice * b) >> 16);
  const auto lower = static_cast<std::uint16_t>(twice * b);
  return static_cast<fixed_point::Word>(upper + static_cast<fixed_point::Word>(lower >> 15));
}

/// numerator / (denominator x 2^16), Q15, rounded down and held below 1. Both from 0 on, and the
/// denominator above 0.
constexpr fixed_point::Word Quotient(fixed_point::Long numerator,
                                     fixed_point::Word denominator) noexcept {
  if (numerator >= fixed_point::Deposit(denominator)) return fixed_point::kMostWord;
  return static_cast<fixed_point::Word>((numerator >> 1) / denominator);
}

/// The largest even number from 0 to 32766 whose doubled square is no more.
constexpr fixed_point::Word SquareRoot(fixed_point::Long square) noexcept {
  fixed_point::Word root = 0;
  for (fixed_point::Word bit = 0x4000; bit > 1; bit = static_cast<fixed_point::Word>(bit >> 1)) {
    const auto tried = static_cast<fixed_point::Word>(root + bit);
    if (fixed_point::LongMultiply(tried, tried) <= square) root = tried;
  }
  return root;
}

/// Copies samples, shifted so that the largest takes 12 bits and the sign.
/// @return by how many bits to the left: -3 to 11.
inline int NormalizedCopy(const fixed_point::Word* samples, std::size_t count,
                          fixed_point::Word* copy) noexcept {
  int bits = 0;  // that are used by any of them
  for (std::size_t i = 0; i < count; ++i) bits |= samples[i] < 0 ? -samples[i] : samples[i];
  const int norm = fixed_point::Norm(fixed_point::Saturate(bits));
  const auto factor = static_cast<fixed_point::Word>(1 << norm);
  for (std::size_t i = 0; i < count; ++i) {
    // Whose 16 bits are enough, as vector instructions make more of them at a time.
    const auto shifted = static_cast<fixed_point::Word>(samples[i] * factor);
    copy[i] = static_cast<fixed_point::Word>(shifted >> 3);
  }
  return norm - 3;
}

/// The generator of noise.
constexpr std::uint16_t NextRandom(std::uint16_t seed) noexcept {
  return static_cast<std::uint16_t>(seed * 521U + 259U);
}

}  // namespace Quorvex::g723_1
