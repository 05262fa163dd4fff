#include "codecs/engines/g729a/functions.h"

#include <array>
#include <cstddef>

#include "codecs/engines/g729a/function_tables.h"

namespace Quorvex::g729a {

using namespace fixed_point;

namespace {

// Between a point of a falling or rising table and the next. @param fraction  Q15.
template <std::size_t kPoints>
Long Interpolate(const std::array<Word, kPoints>& table, int index, Word fraction) noexcept {
  const auto i = static_cast<std::size_t>(index);
  return MultiplySubtract(Deposit(table[i]), Subtract(table[i], table[i + 1]), fraction);
}

// Of a positive number's upper bits: its place in a table, 6 bits, and what lies between, 15 bits.
int Place(Long value) noexcept { return value >> 25; }
Word Between(Long value) noexcept { return static_cast<Word>((value >> 10) & 0x7FFF); }

}  // namespace

Logarithm Log2(Long value) noexcept {
  if (value <= 0) return {};
  const int norm = LongNorm(value);
  const Long normal = value << norm;
  return {static_cast<Word>(30 - norm),
          High(Interpolate(kLogarithms, Place(normal) - 32, Between(normal)))};
}

Long Pow2(Logarithm exponent) noexcept {
  const int fraction = exponent.fraction;
  const Long power =
      Interpolate(kPowers, fraction >> 10, static_cast<Word>((fraction & 0x3FF) << 5));
  return LongShiftRightRounded(power, 30 - exponent.exponent);
}

Long InverseRoot(Long value) noexcept {
  if (value <= 0) return 0x3FFFFFFF;
  const int norm = LongNorm(value);
  const int exponent = 30 - norm;
  // An even power of two is taken out.
  const Long normal = (value << norm) >> (exponent % 2 == 0 ? 1 : 0);
  return Interpolate(kInverseRoots, Place(normal) - 16, Between(normal)) >> (exponent / 2 + 1);
}

}  // namespace Quorvex::g729a
