// For each of the two predictors: the nearest vector of the first stage, then of each half of the
// second stage what brings it nearest where the ear is most exact. The better predictor is taken.
#include "codecs/engines/g729a/lsf_search.h"

#include <algorithm>
#include <array>
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

// A codebook by its columns, so that one instruction takes several rows.
template <std::size_t kRows>
class Codebook {
 public:
  constexpr explicit Codebook(const std::array<LineSpectrum, kRows>& rows) noexcept {
    for (std::size_t i = 0; i < kOrder; ++i) {
      for (std::size_t row = 0; row < kRows; ++row) columns_[i][row] = rows[row][i];
      const auto [least, most] = std::ranges::minmax(columns_[i]);
      least_[i] = least;
      most_[i] = most;
    }
  }

  // The first row with the least sum of weigh(place, error) x error over the frequencies from
  // `begin` to `end` - 1. Row 0, if all sums saturate.
  // @param weigh  returns an error no larger, of the same sign; it may round down.
  template <class Weigh>
  unsigned Search(const LineSpectrum& target, std::size_t begin, std::size_t end,
                  const Weigh& weigh) const noexcept {
    return MostDistance(target, begin, end) < 1 << 30
               ? SearchBy<Long, Difference>(target, begin, end, weigh)
               : SearchBy<std::int64_t, Subtract>(target, begin, end, weigh);
  }

 private:
  // Of numbers that are near enough.
  static constexpr Word Difference(Word a, Word b) noexcept { return static_cast<Word>(a - b); }

  // What no row's sum of squared errors is larger than. @return at most 10 x 2^32.
  std::int64_t MostDistance(const LineSpectrum& target, std::size_t begin,
                            std::size_t end) const noexcept {
    std::int64_t sum = 0;
    for (std::size_t i = begin; i < end; ++i) {
      const std::int64_t error = std::max(target[i] - least_[i], most_[i] - target[i]);
      sum += error * error;
    }
    return sum;
  }

  // No term is negative, so a doubled sum that would saturate is one of 2^30 and more.
  // @param Sum, kSubtract  with which neither sums nor errors overflow.
  template <class Sum, auto kSubtract, class Weigh>
  unsigned SearchBy(const LineSpectrum& target, std::size_t begin, std::size_t end,
                    const Weigh& weigh) const noexcept {
    std::array<Sum, kRows> sums{};
    for (std::size_t i = begin; i < end; ++i) {
      for (std::size_t row = 0; row < kRows; ++row) {
        const Word error = kSubtract(target[i], columns_[i][row]);
        sums[row] += Long{weigh(i, error)} * error;
      }
    }
    Sum least = (1 << 30) - 1;
    for (const Sum sum : sums) least = std::min(least, sum);
    const auto* const best = std::ranges::find(sums, least);
    return best != sums.end() ? static_cast<unsigned>(best - sums.begin()) : 0;
  }

  std::array<std::array<Word, kRows>, kOrder> columns_{};
  LineSpectrum least_{}, most_{};
};

constexpr Codebook kFirst(kFirstStage);
constexpr Codebook kSecond(kSecondStage);

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
  indices.first = kFirst.Search(target, 0, kOrder, [](std::size_t, Word error) { return error; });
  LineSpectrum rest;
  for (std::size_t i = 0; i < kOrder; ++i) {
    rest[i] = Subtract(target[i], kFirstStage[indices.first][i]);
  }
  // No weight is negative, so the product does not saturate.
  const auto weigh = [&weights](std::size_t i, Word error) {
    return static_cast<Word>(Long{weights[i]} * error >> 15);
  };
  indices.low = kSecond.Search(rest, 0, kHalfOrder, weigh);
  indices.high = kSecond.Search(rest, kHalfOrder, kOrder, weigh);
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
