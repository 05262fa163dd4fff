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

#include "codecs/engines/g723_1/convolution.h"
#include "codecs/engines/g723_1/excitation.h"
#include "codecs/engines/g723_1/pitch_gain_search.h"
#include "codecs/engines/g723_1/pitch_gain_tables.h"
#include "codecs/engines/sums_of_products.h"

namespace Quorvex::g723_1 {

using namespace fixed_point;

namespace {

constexpr std::size_t kMostLags = 4;

using Products = std::array<Long, kPitchProducts>;

// Zeros follow the subframe, so that the sums take whole vector registers.
using Padded = std::array<Word, 64>;
using Vectors = std::array<Padded, kPitchTaps>;

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

// The products of so many lags, from the least on, at one norm.
std::array<PitchProducts, kMostLags> ProductsOfLags(int least, std::size_t count,
                                                    const Subframe& target,
                                                    const Subframe& response,
                                                    const Word* excitation) noexcept {
  Padded paddedTarget = {};
  std::ranges::copy(target, paddedTarget.begin());
  std::array<Products, kMostLags> products;
  Long peak = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const LagSamples samples = SamplesOfLag(least + static_cast<int>(i), excitation);
    products[i] = ProductsOf(VectorsOf(samples, response), paddedTarget);
    for (const Long product : products[i]) peak = std::max(peak, LongAbsolute(product));
  }
  const int norm = LongNorm(peak);
  std::array<PitchProducts, kMostLags> normalized;
  for (std::size_t i = 0; i < count; ++i) {
    std::ranges::transform(products[i], normalized[i].begin(),
                           [norm](Long product) { return Round(LongShiftLeft(product, norm)); });
  }
  return normalized;
}

}  // namespace

CodedPitch SearchPitch(const PitchSearch& search, const Taming& taming, const Subframe& target,
                       const Subframe& response, const Word* excitation) noexcept {
  const bool choosesHalfLag = search.subframe % 2 == 0;
  // Its neighbours are lags that can be sent.
  const int middle =
      choosesHalfLag ? std::clamp(search.halfLag, kLeastLag + 1, kMostLag - 2) : search.halfLag;
  const int least = middle - 1;
  const std::size_t count = choosesHalfLag ? 3 : kMostLags;
  const Taming::Rows allowed =
      taming.Allowed(least, least + static_cast<int>(count) - 1, search.isSine);
  const auto products = ProductsOfLags(least, count, target, response, excitation);
  PitchChoice best = {.lag = middle};
  for (std::size_t i = 0; i < count; ++i) {
    const int lag = least + static_cast<int>(i);
    const bool hasShortLagGains =
        HasShortLagGains(search.type, choosesHalfLag ? lag : search.halfLag);
    SearchPitchGains(lag, hasShortLagGains, hasShortLagGains ? allowed.shortLag : allowed.others,
                     products[i], best);
  }
  return {best.lag, best.row};
}

}  // namespace Quorvex::g723_1
