// The samples are windowed and correlated with themselves, and the correlations weighted, which
// widens the formants a little; the Levinson-Durbin recursion makes the filter of them, one order
// after the other.
#include "codecs/engines/g729a/linear_prediction.h"

#include <array>
#include <cstdint>

#include "codecs/engines/g729a/linear_prediction_tables.h"
#include "codecs/engines/g729a/split.h"
#include "codecs/engines/sums_of_products.h"

namespace Quorvex::g729a {

using namespace fixed_point;

namespace {

static_assert(kAnalysisWindow.size() == kAnalysisSamples);

// By the lag.
using Correlation = std::array<Split, kOrder + 1>;

// A reflection coefficient whose upper half is beyond this is too near 1 for the synthesis.
constexpr Word kMostReflection = 32750;

// Zeros follow the samples, so that the loops over all lags have the same length.
using Windowed = std::array<Word, kAnalysisSamples + kOrder>;

// Not below 1.
std::int64_t EnergyOf(const Windowed& samples) noexcept {
  return ExactEnergy(samples.data(), kAnalysisSamples) + 1;
}

// The energy fits into 32 bits, and no sum of products is larger than that of the squares, nor is
// a part of it: nothing can saturate.
Long CorrelationAt(std::size_t lag, const Windowed& samples) noexcept {
  return 2 * CorrelateUndoubled(samples.data(), samples.data() + lag, kAnalysisSamples);
}

Correlation Correlate(const Word* samples) noexcept {
  Windowed windowed{};
  for (std::size_t n = 0; n < kAnalysisSamples; ++n) {
    // The window is positive, so the product fits.
    windowed[n] = static_cast<Word>((Long{samples[n]} * kAnalysisWindow[n] + 0x4000) >> 15);
  }
  std::int64_t energy = EnergyOf(windowed);
  while (energy > kMostLong) {
    for (Word& sample : windowed) sample = static_cast<Word>(sample >> 2);
    energy = EnergyOf(windowed);
  }

  Correlation correlation;
  const int shift = LongNorm(static_cast<Long>(energy));
  correlation[0] = SplitUp(LongShiftLeft(static_cast<Long>(energy), shift));
  for (std::size_t lag = 1; lag <= kOrder; ++lag) {
    const Split value = SplitUp(LongShiftLeft(CorrelationAt(lag, windowed), shift));
    correlation[lag] = SplitUp(SplitMultiply(value, kLagWindow[lag - 1]));
  }
  return correlation;
}

// By one step of Newton's method from an inverse of 15 bits. @param denominator  with no bit below
// the sign unused.
Long Ratio(Long numerator, Split denominator) noexcept {
  const Word rough = Divide(0x3FFF, denominator.high);
  const Long missing = LongSubtract(kMostLong, SplitMultiply(denominator, rough));
  const Split inverse = SplitUp(SplitMultiply(SplitUp(missing), rough));
  return LongShiftLeft(SplitMultiply(SplitUp(numerator), inverse), 2);
}

class Recursion {
 public:
  explicit Recursion(const Correlation& correlation) noexcept
      : correlation_(correlation), error_(correlation[0]) {
    const Split reflection = SplitUp(ReflectionFor(Join(correlation[1])));
    SetLast(1, reflection);
  }

  // From order - 1 to order. @return false if that is not stable.
  bool Extend(std::size_t order) noexcept {
    Long sum = 0;
    for (std::size_t j = 1; j < order; ++j) {
      sum = LongAdd(sum, SplitMultiply(correlation_[j], filter_[order - j]));
    }
    sum = LongAdd(LongShiftLeft(sum, 4), Join(correlation_[order]));

    const Split reflection = SplitUp(ReflectionFor(sum));
    if (Absolute(reflection.high) > kMostReflection) return false;
    const auto before = filter_;
    for (std::size_t j = 1; j < order; ++j) {
      filter_[j] = SplitUp(LongAdd(SplitMultiply(reflection, before[order - j]), Join(before[j])));
    }
    SetLast(order, reflection);
    return true;
  }

  Filter Result() const noexcept {
    Filter result = {4096};
    for (std::size_t i = 1; i <= kOrder; ++i) {
      result[i] = Round(LongShiftLeft(Join(filter_[i]), 1));
    }
    return result;
  }

 private:
  // What cancels this correlation of the error with the samples, Q31.
  Long ReflectionFor(Long correlation) const noexcept {
    const Long size = LongShiftLeft(Ratio(LongAbsolute(correlation), error_), exponent_);
    return correlation > 0 ? LongNegate(size) : size;
  }

  void SetLast(std::size_t order, Split reflection) noexcept {
    filter_[order] = SplitUp(LongShiftRight(Join(reflection), 4));
    const Long square = LongAbsolute(SplitMultiply(reflection, reflection));
    const Long error = SplitMultiply(error_, SplitUp(LongSubtract(kMostLong, square)));
    const int shift = LongNorm(error);
    error_ = SplitUp(LongShiftLeft(error, shift));
    exponent_ += shift;
  }

  const Correlation& correlation_;
  std::array<Split, kOrder + 1> filter_{};  // Q27, without the 1 at its begin
  Split error_;                             // energy left, shifted by the exponent
  int exponent_ = 0;
};

}  // namespace

const Filter& LinearPrediction::Analyze(const Word* samples) noexcept {
  const Correlation correlation = Correlate(samples);
  Recursion recursion(correlation);
  for (std::size_t order = 2; order <= kOrder; ++order) {
    if (!recursion.Extend(order)) return last_;
  }
  last_ = recursion.Result();
  return last_;
}

}  // namespace Quorvex::g729a
