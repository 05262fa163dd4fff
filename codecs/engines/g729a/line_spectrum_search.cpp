// Two polynomials, A(z) plus and minus its mirror image, are zero on the unit circle in turns: at
// the line spectrum. Each polynomial is a sum of five Chebyshev polynomials of the cosine. A change
// of sign between two points of a grid shows a zero, two halvings and a straight line find it.
#include "codecs/engines/g729a/line_spectrum_search.h"

#include <array>
#include <cstddef>

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g729a/line_spectrum_tables.h"
#include "codecs/engines/g729a/split.h"

namespace Quorvex::g729a {

using namespace fixed_point;

namespace {

constexpr std::size_t kHalfOrder = kOrder / 2;

// Coefficients of one polynomial.
using Half = std::array<Word, kHalfOrder + 1>;

struct Point {
  Word x;  // Q15
  Word y;
};

class Polynomials {
 public:
  explicit Polynomials(const Filter& filter) noexcept {
    if (!SetCoefficients(filter, 11)) SetCoefficients(filter, 10);
  }

  // @param which  0: the sum, 1: the difference.
  Point At(Word x, std::size_t which) const noexcept {
    return {x, High(LongShiftLeft(Value(halves_[which], x), valueShift_))};
  }

 private:
  // Without the zeros that both have at any rate, at 1 and at -1. @param fraction  bits of the
  // coefficients'. @return false if that is too many for 16 bits.
  bool SetCoefficients(const Filter& filter, int fraction) noexcept {
    one_ = static_cast<Word>(1 << (fraction - 3));
    valueShift_ = 17 - fraction;
    bool fits = true;
    for (Half& half : halves_) half[0] = static_cast<Word>(1 << fraction);
    for (std::size_t i = 0; i < kHalfOrder; ++i) {
      const Long first = filter[i + 1];
      const Long mirrored = filter[kOrder - i];
      const Long sum = ((first + mirrored) >> (12 - fraction)) - halves_[0][i];
      const Long difference = ((first - mirrored) >> (12 - fraction)) + halves_[1][i];
      halves_[0][i + 1] = Saturate(sum);
      halves_[1][i + 1] = Saturate(difference);
      fits = fits && sum == halves_[0][i + 1] && difference == halves_[1][i + 1];
    }
    return fits;
  }

  Long Value(const Half& half, Word x) const noexcept {
    Split before = {one_, 0};
    Split now = SplitUp(MultiplyAdd(LongMultiply(x, static_cast<Word>(2 * one_)), half[1], 4096));
    for (std::size_t i = 2; i < kHalfOrder; ++i) {
      const Long twice = LongShiftLeft(SplitMultiply(now, x), 1);
      const Long next = MultiplyAdd(Less(twice, before), half[i], 4096);
      before = now;
      now = SplitUp(next);
    }
    return MultiplyAdd(Less(SplitMultiply(now, x), before), half[kHalfOrder], 2048);
  }
  static Long Less(Long value, Split subtracted) noexcept {
    return MultiplySubtract(MultiplyAdd(value, subtracted.high, kLeastWord), subtracted.low, 1);
  }

  std::array<Half, 2> halves_;
  Word one_ = 0;        // of the recursion's upper halves
  int valueShift_ = 0;  // from the recursion to what At returns
};

bool ChangeSign(Point a, Point b) noexcept { return Long{a.y} * b.y <= 0; }

// Where the line through two points crosses 0.
Word Crossing(Point lower, Point upper) noexcept {
  const Word width = Subtract(upper.x, lower.x);
  const Word rise = Subtract(upper.y, lower.y);
  if (rise == 0) return lower.x;
  const Word size = Absolute(rise);
  const int shift = Norm(size);
  const Word inverse = Divide(16383, ShiftLeft(size, shift));
  const Word slope = Low(LongShiftRight(LongMultiply(width, inverse), 20 - shift));
  const Word step =
      Low(LongShiftRight(LongMultiply(lower.y, rise < 0 ? Negate(slope) : slope), 11));
  return Subtract(lower.x, step);
}

// The zero between two points.
Word ZeroBetween(Point lower, Point upper, std::size_t which,
                 const Polynomials& polynomials) noexcept {
  for (int i = 0; i < 2; ++i) {
    const auto middle = static_cast<Word>((lower.x >> 1) + (upper.x >> 1));
    const Point point = polynomials.At(middle, which);
    (ChangeSign(lower, point) ? upper : lower) = point;
  }
  return Crossing(lower, upper);
}

}  // namespace

LineSpectrum SearchCosines(const Filter& filter, const LineSpectrum& before) noexcept {
  const Polynomials polynomials(filter);
  LineSpectrum cosines;
  std::size_t found = 0;
  Point upper = polynomials.At(kRootGrid[0], 0);
  for (std::size_t i = 1; i < kRootGrid.size(); ++i) {
    const Point lower = polynomials.At(kRootGrid[i], found % 2);
    if (!ChangeSign(lower, upper)) {
      upper = lower;
      continue;
    }
    cosines[found] = ZeroBetween(lower, upper, found % 2, polynomials);
    upper = polynomials.At(cosines[found], (found + 1) % 2);
    if (++found == kOrder) return cosines;
  }
  return before;
}

LineSpectrum FrequenciesOf(const LineSpectrum& cosines) noexcept {
  constexpr Word kPi = 25736;  // Q13
  LineSpectrum frequencies;
  std::size_t place = kCosines.size() - 1;
  for (std::size_t i = kOrder; i-- > 0;) {
    while (place > 0 && kCosines[place] < cosines[i]) --place;
    const Word beyond = Subtract(cosines[i], kCosines[place]);
    const Word part = Low(LongMultiply(kArcCosineSlopes[place], beyond) >> 12);
    const Word normalized = Add(static_cast<Word>(place << 9), part);
    frequencies[i] = Multiply(normalized, kPi);
  }
  return frequencies;
}

}  // namespace Quorvex::g729a
