// Fixed-point arithmetic of the speech codecs: 16 and 32 bits, two's complement, every operation
// saturating by itself, so that the order of operations matters. The operations, and what they do
// at the limits, are the basic operators of ITU-T G.191.
//
// Products carry the fraction: two Q15 numbers make a Q31 one, hence the doubling in LongMultiply.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <limits>

namespace Quorvex::fixed_point {

using Word = std::int16_t;
using Long = std::int32_t;

inline constexpr Word kMostWord = std::numeric_limits<Word>::max();
inline constexpr Word kLeastWord = std::numeric_limits<Word>::min();
inline constexpr Long kMostLong = std::numeric_limits<Long>::max();
inline constexpr Long kLeastLong = std::numeric_limits<Long>::min();

/// The nearest 16-bit number.
constexpr Word Saturate(Long value) noexcept {
  return static_cast<Word>(std::clamp<Long>(value, kLeastWord, kMostWord));
}
/// The nearest 32-bit number.
constexpr Long SaturateLong(std::int64_t value) noexcept {
  return static_cast<Long>(std::clamp<std::int64_t>(value, kLeastLong, kMostLong));
}

constexpr Word Add(Word a, Word b) noexcept { return Saturate(Long{a} + b); }
constexpr Word Subtract(Word a, Word b) noexcept { return Saturate(Long{a} - b); }
constexpr Word Negate(Word a) noexcept { return Saturate(-Long{a}); }
constexpr Word Absolute(Word a) noexcept { return a < 0 ? Negate(a) : a; }

// By the processor's overflow flag, which costs a jump that is hardly ever taken.
constexpr Long LongAdd(Long a, Long b) noexcept {
  Long sum = 0;
  if (!__builtin_add_overflow(a, b, &sum)) return sum;
  return a < 0 ? kLeastLong : kMostLong;
}
constexpr Long LongSubtract(Long a, Long b) noexcept {
  Long difference = 0;
  if (!__builtin_sub_overflow(a, b, &difference)) return difference;
  return a < 0 ? kLeastLong : kMostLong;
}
constexpr Long LongNegate(Long a) noexcept { return SaturateLong(-std::int64_t{a}); }
constexpr Long LongAbsolute(Long a) noexcept { return a < 0 ? LongNegate(a) : a; }

/// Q15 x Q15 to Q15, rounded down.
constexpr Word Multiply(Word a, Word b) noexcept { return Saturate((Long{a} * b) >> 15); }
/// The same, rounded to the nearest, a half upwards.
constexpr Word MultiplyRounded(Word a, Word b) noexcept {
  return Saturate((Long{a} * b + 0x4000) >> 15);
}
/// Q15 x Q15 to Q31.
constexpr Long LongMultiply(Word a, Word b) noexcept {
  const Long product = Long{a} * b;
  return LongAdd(product, product);
}
/// sum + a x b and sum - a x b, the product a Q31 one.
constexpr Long MultiplyAdd(Long sum, Word a, Word b) noexcept {
  return LongAdd(sum, LongMultiply(a, b));
}
constexpr Long MultiplySubtract(Long sum, Word a, Word b) noexcept {
  return LongSubtract(sum, LongMultiply(a, b));
}

/// Shifts. A negative count shifts the other way; to the right, the result is rounded down.
constexpr Word ShiftRight(Word value, int count) noexcept;
constexpr Word ShiftLeft(Word value, int count) noexcept {
  if (count < 0) return ShiftRight(value, -std::max(count, -15));
  // By 15 every number but 0 and -1 is past the limit.
  return Saturate(Long{value} * (1 << std::min(count, 15)));
}
constexpr Word ShiftRight(Word value, int count) noexcept {
  if (count < 0) return ShiftLeft(value, -std::max(count, -16));
  return static_cast<Word>(value >> std::min(count, 15));
}
constexpr Long LongShiftRight(Long value, int count) noexcept;
constexpr Long LongShiftLeft(Long value, int count) noexcept {
  if (count < 0) return LongShiftRight(value, -std::max(count, -31));
  // By 31 every number but 0 is past the limit.
  return SaturateLong(std::int64_t{value} * (std::int64_t{1} << std::min(count, 31)));
}
constexpr Long LongShiftRight(Long value, int count) noexcept {
  if (count < 0) return LongShiftLeft(value, -std::max(count, -31));
  return value >> std::min(count, 31);
}

/// To the right by a count from 0, rounded to the nearest, a half upwards.
constexpr Long LongShiftRightRounded(Long value, int count) noexcept {
  if (count <= 0) return value;
  if (count > 31) return 0;
  return (value >> count) + ((value >> (count - 1)) & 1);
}

/// The halves of a 32-bit number. Low takes its bits as they are.
constexpr Word High(Long value) noexcept { return static_cast<Word>(value >> 16); }
constexpr Word Low(Long value) noexcept { return static_cast<Word>(value); }
/// A 16-bit number as the upper half.
constexpr Long Deposit(Word value) noexcept { return Long{value} * 0x10000; }
/// The upper half, rounded to the nearest, a half upwards.
constexpr Word Round(Long value) noexcept { return High(LongAdd(value, 0x8000)); }

/// How far a number can be shifted to the left until the bit below its sign is used; 0 for 0, and
/// all bits for -1.
constexpr int Norm(Word value) noexcept {
  if (value == 0) return 0;
  const auto bits = static_cast<std::uint16_t>(value < 0 ? ~value : value);
  return std::countl_zero(bits) - 1;
}
constexpr int LongNorm(Long value) noexcept {
  if (value == 0) return 0;
  const auto bits = static_cast<std::uint32_t>(value < 0 ? ~value : value);
  return std::countl_zero(bits) - 1;
}

/// a / b as Q15, rounded down, for 0 <= a <= b and b above 0; the largest number when they are
/// equal.
constexpr Word Divide(Word a, Word b) noexcept {
  return a == b ? kMostWord : static_cast<Word>((Long{a} << 15) / b);
}

}  // namespace Quorvex::fixed_point
