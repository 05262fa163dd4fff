// The error that gains leave is a quadratic form of both, whose coefficients are correlations of
// the target and the two vectors. Its minimum says which neighbouring rows of the codebooks are
// worth trying, and of these the form itself tells the best.
//
// The coefficients differ in size by so much that each has an exponent of its own.
#include "codecs/engines/g729a/gain_search.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>

#include "codecs/engines/g729a/correlation.h"
#include "codecs/engines/g729a/gain_search_tables.h"
#include "codecs/engines/g729a/gain_tables.h"
#include "codecs/engines/g729a/split.h"

namespace Quorvex::g729a {

using namespace fixed_point;

namespace {

constexpr Word kMostTamedOptimum = 481;  // Q9: 0.94
constexpr Word kMostTamedGain = 16383;   // Q14: 1, not reached

// Coefficients of the error, which is
//     pitchSquared p p + pitch p + codeSquared c c + code c + product p c.
struct ErrorForm {
  Scaled pitchSquared;
  Scaled pitch;
  Scaled codeSquared;
  Scaled code;
  Scaled product;
};

// Gains where the error is least.
struct Optimum {
  Word pitch;  // Q9
  Word code;   // Q2
};

// As Scaled, before its lower bits go.
struct LongScaled {
  Long value;
  int shift;
};

LongScaled ProductOf(Scaled a, Scaled b, int shift) noexcept {
  return {LongMultiply(a.value, b.value), a.shift + b.shift + shift};
}

LongScaled Half(LongScaled value) noexcept { return {value.value >> 1, value.shift - 1}; }

Scaled Difference(LongScaled a, LongScaled b) noexcept {
  const int shift = std::min(a.shift, b.shift);
  const Long difference = LongSubtract(LongShiftRight(a.value, a.shift - shift),
                                       LongShiftRight(b.value, b.shift - shift));
  const int norm = LongNorm(difference);
  return {High(LongShiftLeft(difference, norm)), shift + norm - 16};
}

ErrorForm FormOf(const GainTask& task) noexcept {
  Subframe eighth;
  std::ranges::transform(task.codeVector, eighth.begin(),
                         [](Word sample) { return ShiftRight(sample, 3); });
  const Correlator correlator(eighth);
  const auto correlation = [&correlator](const Subframe& with, int shift) {
    const Scaled sum = Normalize(correlator.With(with, 1).value);
    return Scaled{sum.value, sum.shift + shift};
  };
  ErrorForm form{.pitchSquared = {task.pitch.energy.value, task.pitch.energy.shift - 15},
                 .pitch = {Negate(task.pitch.likeness.value), task.pitch.likeness.shift - 16},
                 .codeSquared = correlation(eighth, 3),
                 .code = correlation(task.target, -7),
                 .product = correlation(task.pitchVector, -7)};
  form.code.value = Negate(form.code.value);
  return form;
}

// Both derivatives are 0.
Optimum OptimumOf(const ErrorForm& form) noexcept {
  const Scaled determinant = Difference(ProductOf(form.pitchSquared, form.codeSquared, -1),
                                        ProductOf(form.product, form.product, 1));
  // Not above 0 only where one vector is a multiple of the other, or where sums saturate; then the
  // standard divides by what it must not.
  const Word divisor = std::max<Word>(determinant.value, 0x4000);
  const Scaled inverse{Negate(Divide(0x4000, divisor)), 29 - determinant.shift};
  const auto quotient = [inverse](LongScaled a, LongScaled b, int shift) {
    const Scaled numerator = Difference(Half(a), Half(b));
    return High(LongShiftRight(LongMultiply(numerator.value, inverse.value),
                               numerator.shift + inverse.shift - shift));
  };
  return {quotient(ProductOf(form.codeSquared, form.pitch, 0),
                   ProductOf(form.code, form.product, 1), 24),
          quotient(ProductOf(form.pitchSquared, form.code, 0),
                   ProductOf(form.pitch, form.product, 1), 17)};
}

// Q4.
Word PlainGain(PredictedGain predicted) noexcept {
  return predicted.exponent >= 4 ? ShiftRight(predicted.mantissa, predicted.exponent - 4)
                                 : High(LongShiftLeft(predicted.mantissa, 20 - predicted.exponent));
}

// How many limits, each times the predicted gain, a value is past.
std::size_t CountPassed(Long value, std::span<const Word> limits, Word gain, int shift) noexcept {
  const auto isReached = [=](Word limit) {
    const Long product = LongMultiply(limit, gain) >> shift;
    return gain > 0 ? value <= product : value >= product;
  };
  return static_cast<std::size_t>(std::ranges::find_if(limits, isReached) - limits.begin());
}

struct Rows {
  std::size_t first, second;
};

// The first row of each codebook to try: the optimum, taken apart into a part on the line of the
// first codebook and one on the line of the second.
Rows Preselect(Optimum optimum, Word predicted) noexcept {
  const Long steep = LongMultiply(kFirstSlope, optimum.pitch);
  const Word flat = Multiply(High(LongSubtract(steep, kFirstOffset >> 10)), predicted);
  const Long factor =
      LongSubtract(LongMultiply(flat, kSecondSlope), LongMultiply(kFirstSlope, optimum.code) >> 3);
  const Word most = High(LongAdd(steep, kBothOffsets >> 15));
  const Long pitch = LongSubtract(LongShiftLeft(optimum.code, 7), LongMultiply(most, predicted));
  const auto scale = [](Long value) {
    return LongMultiply(High(LongShiftLeft(value, 2)), kInverseSlope);
  };
  return {CountPassed(scale(factor), kFirstLimits, predicted, 3),
          CountPassed(scale(pitch), kSecondLimits, predicted, 5)};
}

// The error of a pair of gains.
class ErrorMeasure {
 public:
  ErrorMeasure(const ErrorForm& form, PredictedGain predicted) noexcept
      : predicted_(predicted.mantissa) {
    const int x = predicted.exponent;
    const std::array<Scaled, 5> terms = {
        {{form.pitchSquared.value, form.pitchSquared.shift + 13},
         {form.pitch.value, form.pitch.shift + 14},
         {form.codeSquared.value, form.codeSquared.shift + 2 * x - 21},
         {form.code.value, form.code.shift + x - 3},
         {form.product.value, form.product.shift + x - 4}}};
    const int least = std::ranges::min(terms, {}, &Scaled::shift).shift;
    std::ranges::transform(terms, terms_.begin(), [least](Scaled term) {
      return SplitUp(LongShiftRight(Deposit(term.value), term.shift - least));
    });
  }

  Long Of(const GainSum& gains) const noexcept {
    const Word pitch = gains.pitch;
    const Word code = Multiply(predicted_, Low(gains.factor >> 1));
    const std::array<Word, 5> powers = {Multiply(pitch, pitch), pitch, Multiply(code, code), code,
                                        Multiply(code, pitch)};
    Long error = 0;
    for (std::size_t i = 0; i < powers.size(); ++i) {
      error = LongAdd(error, SplitMultiply(terms_[i], powers[i]));
    }
    return error;
  }

 private:
  Word predicted_;
  std::array<Split, 5> terms_;
};

// The best pair of rows from these on.
Rows SearchRows(Rows begin, const ErrorMeasure& measure, bool isTamed) noexcept {
  Rows best = begin;
  Long least = kMostLong;
  for (std::size_t i = begin.first; i < begin.first + kFirstTried; ++i) {
    for (std::size_t j = begin.second; j < begin.second + kSecondTried; ++j) {
      const GainSum gains = SumOfRows(i, j);
      if (isTamed && gains.pitch >= kMostTamedGain) continue;
      const Long error = measure.Of(gains);
      if (error < least) {
        least = error;
        best = {i, j};
      }
    }
  }
  return best;
}

}  // namespace

CodedGains SearchGains(const GainTask& task) noexcept {
  const ErrorForm form = FormOf(task);
  Optimum optimum = OptimumOf(form);
  if (task.isTamed) optimum.pitch = std::min(optimum.pitch, kMostTamedOptimum);
  const Rows begin = Preselect(optimum, PlainGain(task.predicted));
  const Rows rows = SearchRows(begin, ErrorMeasure(form, task.predicted), task.isTamed);
  return {.firstIndex = kFirstIndices[rows.first],
          .secondIndex = kSecondIndices[rows.second],
          .sum = SumOfRows(rows.first, rows.second)};
}

}  // namespace Quorvex::g729a
