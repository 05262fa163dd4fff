// For each of the two predictors: the nearest vector of the first stage, then of each half of the
// second stage what brings it nearest where the ear is most exact. The better predictor is taken.
#include "codecs/engines/g729a/lsf_search.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g729a/lsf_tables.h"

namespace Quorvex::g729a {

using namespace fixed_point;

namespace {

constexpr std::size_t kHalfOrder = kOrder / 2;

// How much an error of each frequency counts: more where the neighbours are near. @return all
// shifted by the same, so that the largest has no bit unused.
LineSpectrum WeightsOf(const LineSpectrum& frequencies) noexcept {
  constexpr Word kWide = 8192;                  // 1 radian, Q13
  constexpr Word kFirst = 1029, kLast = 23677;  // 0.04 pi and 0.92 pi
  constexpr Word kBase = 2048, kSlope = 20480;  // 1 and 10, Q11
  constexpr Word kMiddle = 19661;               // 1.2, Q14
  LineSpectrum weights;
  for (std::size_t i = 0; i < kOrder; ++i) {
    const Word below = i == 0 ? kFirst : frequencies[i - 1];
    const Word above = i == kOrder - 1 ? kLast : frequencies[i + 1];
    const Word beyond = Subtract(Subtract(above, below), kWide);
    weights[i] = kBase;
    if (beyond > 0) continue;
    const Word square = High(LongShiftLeft(LongMultiply(beyond, beyond), 2));
    weights[i] = Add(High(LongShiftLeft(LongMultiply(square, kSlope), 2)), kBase);
  }
  for (const std::size_t i : {kHalfOrder - 1, kHalfOrder}) {
    weights[i] = High(LongShiftLeft(LongMultiply(weights[i], kMiddle), 1));
  }
  const int shift = Norm(*std::ranges::max_element(weights));
  for (Word& weight : weights) weight = ShiftLeft(weight, shift);
  return weights;
}

// The sums below have no negative term, so a sum that would saturate is one that is not less than
// the largest number: with 64 bits the loops need not ask.

unsigned SearchFirst(const LineSpectrum& target) noexcept {
  unsigned best = 0;
  std::int64_t least = kMostLong;
  for (unsigned row = 0; row < kFirstStage.size(); ++row) {
    std::int64_t sum = 0;
    for (std::size_t i = 0; i < kOrder; ++i) {
      const Word error = Subtract(target[i], kFirstStage[row][i]);
      sum += Long{error} * error;
    }
    if (2 * sum >= least) continue;
    least = 2 * sum;
    best = row;
  }
  return best;
}

// @param target  what the first stage leaves. @param begin  of the half: its first frequency.
unsigned SearchSecond(const LineSpectrum& target, const LineSpectrum& weights,
                      std::size_t begin) noexcept {
  unsigned best = 0;
  std::int64_t least = kMostLong;
  for (unsigned row = 0; row < kSecondStage.size(); ++row) {
    std::int64_t sum = 0;
    for (std::size_t i = begin; i < begin + kHalfOrder; ++i) {
      const Word error = Subtract(target[i], kSecondStage[row][i]);
      sum += Long{Multiply(weights[i], error)} * error;
    }
    if (2 * sum >= least) continue;
    least = 2 * sum;
    best = row;
  }
  return best;
}

struct Candidate {
  LSFIndices indices;
  Long distance;  // of the frequencies, weighted
};

Long Distance(const LineSpectrum& found, const LineSpectrum& target, const LineSpectrum& weights,
              unsigned predictor) noexcept {
  Long sum = 0;
  for (std::size_t i = 0; i < kOrder; ++i) {
    const Word error = Multiply(Subtract(found[i], target[i]), kResidualWeights[predictor][i]);
    const Word weighted = High(LongShiftLeft(LongMultiply(weights[i], error), 4));
    sum = MultiplyAdd(sum, weighted, error);
  }
  return sum;
}

Candidate Search(const LineSpectrum& target, const LineSpectrum& weights,
                 unsigned predictor) noexcept {
  LSFIndices indices;
  indices.predictor = predictor;
  indices.first = SearchFirst(target);
  LineSpectrum rest;
  for (std::size_t i = 0; i < kOrder; ++i) {
    rest[i] = Subtract(target[i], kFirstStage[indices.first][i]);
  }
  indices.low = SearchSecond(rest, weights, 0);
  indices.high = SearchSecond(rest, weights, kHalfOrder);
  return {indices, Distance(ResidualFrom(indices), target, weights, predictor)};
}

}  // namespace

LSFIndices SearchLSF(const LineSpectrum& frequencies, const LSFPredictor& predictor) noexcept {
  const LineSpectrum weights = WeightsOf(frequencies);
  const Candidate first = Search(predictor.ResidualOf(frequencies, 0), weights, 0);
  const Candidate second = Search(predictor.ResidualOf(frequencies, 1), weights, 1);
  return second.distance < first.distance ? second.indices : first.indices;
}

}  // namespace Quorvex::g729a
