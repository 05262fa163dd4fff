#include "codecs/engines/g729a/gain_predictor.h"

#include <algorithm>
#include <cstddef>

#include "codecs/engines/g729a/functions.h"
#include "codecs/engines/g729a/gain_tables.h"
#include "codecs/engines/g729a/split.h"
#include "codecs/engines/sums_of_products.h"

namespace Quorvex::g729a {

using namespace fixed_point;

namespace {

/// Decibels a factor of two is, halved, as 10 log10(2) x 2^13.
constexpr Word kDecibels = 24660;

}  // namespace

PredictedGain GainPredictor::Predict(const Subframe& code) const noexcept {
  const Logarithm log = Log2(Correlate(code.data(), code.data(), code.size()));
  // The mean energy of speech less that of the code, and the predicted difference.
  const Long difference = SplitMultiply({log.exponent, log.fraction}, Word{-kDecibels});
  Long sum = LongShiftLeft(MultiplyAdd(difference, 32588, 32), 10);
  for (std::size_t k = 0; k < errors_.size(); ++k) {
    sum = MultiplyAdd(sum, kGainPredictor[k], errors_[k]);
  }
  // From decibels to powers of two: 2^15 / (20 log10(2)), in Q0.
  const Split power = SplitUp(LongMultiply(High(sum), 5439) >> 8);
  return {Low(Pow2({14, power.low})), Subtract(14, power.high)};
}

void GainPredictor::Update(Long factor) noexcept {
  const Logarithm log = Log2(factor);
  const Long power = Join({Subtract(log.exponent, 13), log.fraction});
  Push(Multiply(High(LongShiftLeft(power, 13)), kDecibels));
}

void GainPredictor::UpdateLost() noexcept {
  Long sum = 0;
  for (const Word error : errors_) sum += error;
  Push(std::max<Word>(Subtract(Low(sum >> 2), 4096), -14336));
}

void GainPredictor::Push(Word energy) noexcept {
  std::shift_right(errors_.begin(), errors_.end(), 1);
  errors_.front() = energy;
}

Word CodeGainOf(PredictedGain predicted, Long factor) noexcept {
  const Long gain = LongMultiply(Low(factor >> 1), predicted.mantissa);
  return High(LongShiftLeft(gain, 4 - predicted.exponent));
}

}  // namespace Quorvex::g729a
