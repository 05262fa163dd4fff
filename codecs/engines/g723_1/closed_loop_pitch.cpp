// The adaptive vector is a sum of five neighbouring lags' vectors. Behind the weighted synthesis
// its distance to the target depends on twenty sums of products, the same for every row of gains:
//
//     target x F0 .. target x F4     F0 x F0 .. F4 x F4     F1 x F0, F2 x F0, F2 x F1 .. F4 x F3
//
// and a row holds the twenty factors that belong to them.
#include "codecs/engines/g723_1/closed_loop_pitch.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "codecs/engines/g723_1/convolution.h"
#include "codecs/engines/g723_1/excitation.h"
#include "codecs/engines/g723_1/pitch_gain_tables.h"
#include "codecs/engines/sums_of_products.h"

namespace Quorvex::g723_1 {

using namespace fixed_point;

namespace {

constexpr std::size_t kProducts = std::tuple_size_v<PitchGainRow>;
constexpr std::size_t kMostLags = 4;

using Products = std::array<Long, kProducts>;
using NormalizedProducts = std::array<Word, kProducts>;

// Zeros follow the subframe, so that the sums take whole vector registers.
using Padded = std::array<Word, 64>;
using Vectors = std::array<Padded, kPitchTaps>;

// The lags that are tried.
struct Lags {
  int least;
  std::size_t count;
};

Subframe ConvolveSaturating(const Word* samples, const Subframe& response) noexcept {
  Subframe filtered;
  for (std::size_t n = 0; n < kSubframeSamples; ++n) {
    Long sum = 0;
    for (std::size_t j = 0; j <= n; ++j) sum = MultiplyAdd(sum, samples[j], response[n - j]);
    filtered[n] = Round(sum);
  }
  return filtered;
}

// What each tap's samples become behind the weighted synthesis: the last tap's by a convolution,
// the others' by what comes one sample earlier.
Vectors VectorsOf(const LagSamples& samples, const Subframe& response) noexcept {
  constexpr std::size_t kLast = kPitchTaps - 1;
  Vectors vectors = {};
  const Word* const newest = &samples[kLast];
  std::ranges::copy(ProductsStayBelow(kSumLimit, newest, response)
                        ? Convolve(newest, response, 15)
                        : ConvolveSaturating(newest, response),
                    vectors[kLast].begin());
  for (std::size_t i = kLast; i-- > 0;) {
    vectors[i][0] = MultiplyRounded(samples[i], 0x2000);
    for (std::size_t n = 1; n < kSubframeSamples; ++n) {
      // As a saturating sum with the vector in its upper half has it, rounded.
      const Long added = (samples[i] * response[n] + 0x4000) >> 15;
      vectors[i][n] = Saturate(vectors[i + 1][n - 1] + added);
    }
  }
  return vectors;
}

// How sums of products are made, where they may saturate and where they do not.
struct SaturatingSums {
  static Long Of(const Padded& a, const Padded& b) noexcept {
    Long sum = 0;
    for (std::size_t n = 0; n < kSubframeSamples; ++n) {
      sum = LongAdd(sum, LongMultiply(a[n], b[n]) >> 1);
    }
    return sum;
  }
  static Long Energy(const Padded& a) noexcept {
    return Correlate(a.data(), a.data(), kSubframeSamples);
  }
};
struct PlainSums {
  static Long Of(const Padded& a, const Padded& b) noexcept {
    return CorrelateUndoubled(a.data(), b.data(), a.size());
  }
  static Long Energy(const Padded& a) noexcept { return 2 * Of(a, a); }
};

bool EnergyIsBelow(std::int64_t limit, const Padded& vector) noexcept {
  Long sum = 0;  // at most 2^29
  for (const Word sample : vector) sum += (sample * sample >> 7) + 1;
  return sum < limit >> 7;
}

// A sum of the products of two vectors, and each part of it, is at most the geometric mean of their
// energies. With the target it may have one bit more, as it is not doubled.
bool SumsStayBelowLimit(const Vectors& vectors, const Padded& target) noexcept {
  return EnergyIsBelow(std::int64_t{4} * kSumLimit, target) &&
         std::ranges::all_of(vectors,
                             [](const Padded& vector) { return EnergyIsBelow(kSumLimit, vector); });
}

template <class Sums>
Products ProductsBy(const Vectors& vectors, const Padded& target) noexcept {
  Products products;
  auto next = products.begin();
  for (const Padded& vector : vectors) *next++ = LongShiftLeft(Sums::Of(target, vector), 1);
  for (const Padded& vector : vectors) *next++ = Sums::Energy(vector);
  for (std::size_t i = 1; i < kPitchTaps; ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      *next++ = LongShiftLeft(Sums::Of(vectors[i], vectors[j]), 2);
    }
  }
  return products;
}

Products ProductsOf(const Vectors& vectors, const Padded& target) noexcept {
  return SumsStayBelowLimit(vectors, target) ? ProductsBy<PlainSums>(vectors, target)
                                             : ProductsBy<SaturatingSums>(vectors, target);
}

Long ScoreSaturating(const NormalizedProducts& products, const PitchGainRow& row) noexcept {
  Long score = 0;
  for (std::size_t i = 0; i < kProducts; ++i) {
    score = LongAdd(score, LongMultiply(products[i], row[i]) >> 1);
  }
  return score;
}

// The parts of a row, each of which has products of another size.
struct Part {
  std::size_t first;
  std::size_t end;
};
constexpr std::array<Part, 3> kParts = {
    {{0, kPitchTaps}, {kPitchTaps, 2 * kPitchTaps}, {2 * kPitchTaps, kProducts}}};

constexpr Long MagnitudesOf(const PitchGainRow& row, const Part& part) noexcept {
  return SumOfMagnitudes(row.data() + part.first, part.end - part.first);
}
consteval Long MostMagnitudes(const Part& part) {
  Long most = 0;
  for (const PitchGainRow& row : kShortLagGains) most = std::max(most, MagnitudesOf(row, part));
  for (const PitchGainRow& row : kPitchGains) most = std::max(most, MagnitudesOf(row, part));
  return most;
}
constexpr std::array<Long, 3> kMostMagnitudes = {
    MostMagnitudes(kParts[0]), MostMagnitudes(kParts[1]), MostMagnitudes(kParts[2])};

// Whether the score of some row may.
bool MaySaturate(const NormalizedProducts& products) noexcept {
  std::int64_t most = 0;
  for (std::size_t i = 0; i < kParts.size(); ++i) {
    Long peak = 0;
    for (std::size_t j = kParts[i].first; j < kParts[i].end; ++j) {
      peak = std::max(peak, std::abs(Long{products[j]}));
    }
    most += std::int64_t{peak} * kMostMagnitudes[i];
  }
  return most > kMostLong;
}

// The few rows of which that is true at all: 2^15 times their magnitudes is more than a score
// takes.
template <std::size_t kRows>
consteval std::array<bool, kRows> LoudRows(const std::array<PitchGainRow, kRows>& rows) {
  std::array<bool, kRows> areLoud = {};
  for (std::size_t i = 0; i < kRows; ++i) {
    areLoud[i] = MagnitudesOf(rows[i], {0, kProducts}) >= 1 << 16;
  }
  return areLoud;
}
constexpr auto kLoudShortLagRows = LoudRows(kShortLagGains);
constexpr auto kLoudRows = LoudRows(kPitchGains);

struct Choice {
  int lag;
  unsigned row = 0;
  Long score = 0;
};

void TryRows(int lag, bool hasShortLagGains, unsigned count, const NormalizedProducts& products,
             Choice& best) noexcept {
  const PitchGainRow* const rows = hasShortLagGains ? kShortLagGains.data() : kPitchGains.data();
  const bool* const areLoud = hasShortLagGains ? kLoudShortLagRows.data() : kLoudRows.data();
  const bool maySaturate = MaySaturate(products);
  for (unsigned row = 0; row < count; ++row) {
    const Long score = maySaturate && areLoud[row]
                           ? ScoreSaturating(products, rows[row])
                           : CorrelateUndoubled(products.data(), rows[row].data(), kProducts);
    if (score > best.score) best = {lag, row, score};
  }
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

  Padded paddedTarget = {};
  std::ranges::copy(target, paddedTarget.begin());
  std::array<Products, kMostLags> products;
  Long peak = 0;
  for (std::size_t i = 0; i < lags.count; ++i) {
    const int lag = lags.least + static_cast<int>(i);
    products[i] = ProductsOf(VectorsOf(SamplesOfLag(lag, excitation), response), paddedTarget);
    for (const Long product : products[i]) peak = std::max(peak, LongAbsolute(product));
  }
  const int norm = LongNorm(peak);

  Choice best = {.lag = middle};
  for (std::size_t i = 0; i < lags.count; ++i) {
    const int lag = lags.least + static_cast<int>(i);
    NormalizedProducts normalized;
    std::ranges::transform(products[i], normalized.begin(),
                           [norm](Long product) { return Round(LongShiftLeft(product, norm)); });
    const bool hasShortLagGains = HasShortLagGains(type, choosesHalfLag ? lag : halfLag);
    TryRows(lag, hasShortLagGains, hasShortLagGains ? allowed.shortLag : allowed.others, normalized,
            best);
  }
  return {best.lag, best.row};
}

}  // namespace Quorvex::g723_1
