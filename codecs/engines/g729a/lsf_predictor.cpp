#include "codecs/engines/g729a/lsf_predictor.h"

#include <algorithm>
#include <utility>

namespace Quorvex::g729a {

using namespace fixed_point;

namespace {

// So that the filter is stable: in order, apart, and within the circle.
void Stabilize(LineSpectrum& frequencies) noexcept {
  constexpr Word kLeast = 40, kLeastDistance = 321, kMost = 25681;
  for (std::size_t i = 1; i < kOrder; ++i) {
    if (frequencies[i] < frequencies[i - 1]) std::swap(frequencies[i], frequencies[i - 1]);
  }
  frequencies[0] = std::max(frequencies[0], kLeast);
  for (std::size_t i = 1; i < kOrder; ++i) {
    frequencies[i] = std::max(frequencies[i], Add(frequencies[i - 1], kLeastDistance));
  }
  frequencies[kOrder - 1] = std::min(frequencies[kOrder - 1], kMost);
}

// Moves the frequencies apart, each and the one before by half of what they lack of the gap.
void Spread(LineSpectrum& frequencies, Word gap) noexcept {
  for (std::size_t i = 1; i < kOrder; ++i) {
    const Word lacking = Add(Subtract(frequencies[i - 1], frequencies[i]), gap);
    const Word half = ShiftRight(lacking, 1);
    if (half <= 0) continue;
    frequencies[i - 1] = Subtract(frequencies[i - 1], half);
    frequencies[i] = Add(frequencies[i], half);
  }
}

}  // namespace

LineSpectrum ResidualFrom(const LSFIndices& indices) noexcept {
  const LineSpectrum& first = kFirstStage[indices.first];
  LineSpectrum residual;
  for (std::size_t i = 0; i < kOrder; ++i) {
    const unsigned second = i < kOrder / 2 ? indices.low : indices.high;
    residual[i] = Add(first[i], kSecondStage[second][i]);
  }
  Spread(residual, 10);
  Spread(residual, 5);
  return residual;
}

LineSpectrum LSFPredictor::Decode(const LSFIndices& indices) noexcept {
  const LineSpectrum residual = ResidualFrom(indices);
  predictor_ = indices.predictor;
  for (std::size_t i = 0; i < kOrder; ++i) {
    Long sum = LongMultiply(residual[i], kResidualWeights[predictor_][i]);
    for (std::size_t k = 0; k < residuals_.size(); ++k) {
      sum = MultiplyAdd(sum, residuals_[k][i], kPredictors[predictor_][k][i]);
    }
    last_[i] = High(sum);
  }
  Stabilize(last_);
  Push(residual);
  return last_;
}

LineSpectrum LSFPredictor::Repeat() noexcept {
  Push(ResidualOf(last_, predictor_));
  return last_;
}

LineSpectrum LSFPredictor::ResidualOf(const LineSpectrum& frequencies,
                                      unsigned predictor) const noexcept {
  LineSpectrum residual;
  for (std::size_t i = 0; i < kOrder; ++i) {
    Long rest = Deposit(frequencies[i]);
    for (std::size_t k = 0; k < residuals_.size(); ++k) {
      rest = MultiplySubtract(rest, residuals_[k][i], kPredictors[predictor][k][i]);
    }
    const Long scaled = LongMultiply(High(rest), kInverseResidualWeights[predictor][i]);
    residual[i] = High(LongShiftLeft(scaled, 3));
  }
  return residual;
}

void LSFPredictor::Push(const LineSpectrum& residual) noexcept {
  std::shift_right(residuals_.begin(), residuals_.end(), 1);
  residuals_.front() = residual;
}

}  // namespace Quorvex::g729a
