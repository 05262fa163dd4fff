// The adaptive vector is a sum of five neighbouring lags' vectors. Behind the weighted synthesis
// its distance to the target depends on twenty sums of products, the same for every row of gains:
//
//     target x F0 .. target x F4     F0 x F0 .. F4 x F4     F1 x F0, F2 x F0, F2 x F1 .. F4 x F3
//
// and a row holds the twenty factors that belong to them.
#include "codecs/engines/g723_1/closed_loop_pitch.h"

#include <algorithm>
#include <array>

#include "codecs/engines/g723_1/excitation.h"
#include "codecs/engines/g723_1/pitch_gain_tables.h"
#include "codecs/engines/sums_of_products.h"

namespace Quorvex::g723_1 {

using namespace fixed_point;

namespace {

constexpr std::size_t kProducts = std::tuple_size_v<PitchGainRow>;
constexpr std::size_t kMostLags = 4;

using Products = std::array<Long, kProducts>;
using Vectors = std::array<Subframe, kPitchTaps>;

// The lags that are tried.
struct Lags {
  int least;
  std::size_t count;
};

// What each tap's samples become behind the weighted synthesis: the last tap's by a convolution,
// the others' by what comes one sample earlier.
Vectors VectorsOf(const LagSamples& samples, const Subframe& response) noexcept {
  constexpr std::size_t kLast = kPitchTaps - 1;
  Vectors vectors;
  for (std::size_t n = 0; n < kSubframeSamples; ++n) {
    Long sum = 0;
    for (std::size_t j = 0; j <= n; ++j) {
      sum = MultiplyAdd(sum, samples[kLast + j], response[n - j]);
    }
    vectors[kLast][n] = Round(sum);
  }
  for (std::size_t i = kLast; i-- > 0;) {
    vectors[i][0] = MultiplyRounded(samples[i], 0x2000);
    for (std::size_t n = 1; n < kSubframeSamples; ++n) {
      vectors[i][n] = Round(MultiplyAdd(Deposit(vectors[i + 1][n - 1]), samples[i], response[n]));
    }
  }
  return vectors;
}

// The sum of the products.
Long SumOfProducts(const Subframe& a, const Subframe& b) noexcept {
  Long sum = 0;
  for (std::size_t n = 0; n < kSubframeSamples; ++n) {
    sum = LongAdd(sum, LongMultiply(a[n], b[n]) >> 1);
  }
  return sum;
}

Products ProductsOf(const Vectors& vectors, const Subframe& target) noexcept {
  Products products;
  auto next = products.begin();
  for (const Subframe& vector : vectors) {
    *next++ = LongShiftLeft(SumOfProducts(target, vector), 1);
  }
  for (const Subframe& vector : vectors) {
    *next++ = Correlate(vector.data(), vector.data(), kSubframeSamples);
  }
  for (std::size_t i = 1; i < kPitchTaps; ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      *next++ = LongShiftLeft(SumOfProducts(vectors[i], vectors[j]), 2);
    }
  }
  return products;
}

Long ScoreOf(const PitchGainRow& products, const PitchGainRow& row) noexcept {
  Long score = 0;
  for (std::size_t i = 0; i < kProducts; ++i) {
    score = LongAdd(score, LongMultiply(products[i], row[i]) >> 1);
  }
  return score;
}

}  // namespace

CodedPitch SearchPitch(FrameType type, std::size_t subframe, int halfLag, bool isSine,
                       const Taming& taming, const Subframe& target, const Subframe& response,
                       const Word* excitation) noexcept {
  const bool choosesHalfLag = subframe % 2 == 0;
  // Its neighbours are lags that can be sent.
  const int middle = choosesHalfLag ? std::clamp(halfLag, kLeastLag + 1, kMostLag - 2) : halfLag;
  const Lags lags = {middle - 1, choosesHalfLag ? 3u : 4u};
  const int mostLag = lags.least + static_cast<int>(lags.count) - 1;
  const Taming::Rows allowed = taming.Allowed(lags.least, mostLag, isSine);

  std::array<Products, kMostLags> products;
  Long peak = 0;
  for (std::size_t i = 0; i < lags.count; ++i) {
    const int lag = lags.least + static_cast<int>(i);
    products[i] = ProductsOf(VectorsOf(SamplesOfLag(lag, excitation), response), target);
    for (const Long product : products[i]) peak = std::max(peak, LongAbsolute(product));
  }
  const int norm = LongNorm(peak);

  CodedPitch best = {middle, 0};
  Long most = 0;
  for (std::size_t i = 0; i < lags.count; ++i) {
    const int lag = lags.least + static_cast<int>(i);
    PitchGainRow normalized;
    std::ranges::transform(products[i], normalized.begin(),
                           [norm](Long product) { return Round(LongShiftLeft(product, norm)); });
    const bool hasShortLagGains = HasShortLagGains(type, choosesHalfLag ? lag : halfLag);
    const unsigned rows = hasShortLagGains ? allowed.shortLag : allowed.others;
    for (unsigned row = 0; row < rows; ++row) {
      const Long score = ScoreOf(normalized, PitchGains(hasShortLagGains, row));
      if (score <= most) continue;
      most = score;
      best = {lag, row};
    }
  }
  return best;
}

}  // namespace Quorvex::g723_1
