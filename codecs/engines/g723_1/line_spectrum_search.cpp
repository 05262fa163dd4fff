// Two polynomials, A(z) plus and minus its mirror image, are zero on the unit circle in turns: at
// the line spectrum. On the circle, without the zeros that both have at any rate, they are sums of
// cosines.
#include "codecs/engines/g723_1/line_spectrum_search.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "codecs/engines/g723_1/arithmetic.h"
#include "codecs/engines/g723_1/line_spectrum.h"
#include "codecs/engines/g723_1/line_spectrum_tables.h"

namespace Quorvex::g723_1 {

using namespace fixed_point;

namespace {

constexpr std::size_t kHalfOrder = kOrder / 2;

// By the multiple of the frequency that the cosine is of.
using Half = std::array<Word, kHalfOrder + 1>;
using Halves = std::array<Half, 2>;

Halves PolynomialsOf(const Filter& filter) noexcept {
  std::array<Long, kOrder> smooth;
  for (std::size_t i = 0; i < kOrder; ++i) {
    smooth[i] = Deposit(MultiplyRounded(filter[i], kBandExpansion[i])) >> 4;
  }
  constexpr Long kOne = 0x02000000;
  std::array<Long, kHalfOrder + 1> sum = {kOne};
  std::array<Long, kHalfOrder + 1> difference = {kOne};
  for (std::size_t i = 0; i < kHalfOrder; ++i) {
    const Long mirrored = smooth[kOrder - 1 - i];
    sum[i + 1] = LongSubtract(LongSubtract(LongNegate(sum[i]), smooth[i]), mirrored);
    difference[i + 1] = LongAdd(LongSubtract(difference[i], smooth[i]), mirrored);
  }
  sum[kHalfOrder] >>= 1;
  difference[kHalfOrder] >>= 1;
  Long peak = 0;
  for (const Long value : sum) peak = std::max(peak, LongAbsolute(value));
  for (const Long value : difference) peak = std::max(peak, LongAbsolute(value));
  const int norm = LongNorm(peak);
  Halves halves;
  for (std::size_t j = 0; j <= kHalfOrder; ++j) {
    halves[0][j] = Round(LongShiftLeft(sum[kHalfOrder - j], norm));
    halves[1][j] = Round(LongShiftLeft(difference[kHalfOrder - j], norm));
  }
  return halves;
}

Long ValueAt(const Half& half, std::size_t place) noexcept {
  Long sum = 0;
  for (std::size_t j = 0; j <= kHalfOrder; ++j) {
    sum = MultiplyAdd(sum, half[j], kCosines[place * j % kCosines.size()]);
  }
  return sum;
}

// Where between two points, 128ths, the line through them crosses 0.
Word CrossingOf(Long before, Long now) noexcept {
  const Long from = LongAbsolute(before);
  const Long rise = LongAdd(from, LongAbsolute(now));
  const int norm = LongNorm(rise);
  return Quotient(LongShiftLeft(from, norm) >> 8, High(LongShiftLeft(rise, norm)));
}

// How much the frequencies weigh: the more the nearer their neighbours are.
LineSpectrum WeightsOf(const LineSpectrum& spectrum) noexcept {
  constexpr Word kLeastDistance = 32;
  LineSpectrum weights;
  Word peak = 0;
  for (std::size_t i = 0; i < kOrder; ++i) {
    Word distance = kMostWord;
    if (i > 0) distance = Subtract(spectrum[i], spectrum[i - 1]);
    if (i + 1 < kOrder) {
      distance = std::min(distance, Subtract(spectrum[i + 1], spectrum[i]));
    }
    weights[i] = distance > kLeastDistance ? Divide(kLeastDistance, distance) : kMostWord;
    peak = std::max(peak, weights[i]);
  }
  const int norm = Norm(peak);
  for (Word& weight : weights) weight = static_cast<Word>(weight * (1 << norm));
  return weights;
}

unsigned NearestRow(std::size_t band, const LineSpectrum& target,
                    const LineSpectrum& weights) noexcept {
  const std::size_t first = kBands[band].first;
  const std::size_t count = kBands[band].count;
  Long best = -1;
  unsigned bestRow = 0;
  for (unsigned row = 0; row < kBandCodebooks[band].size(); ++row) {
    const BandVector& code = kBandCodebooks[band][row];
    BandVector weighted{};
    Long sum = 0;
    for (std::size_t i = 0; i < count; ++i) {
      weighted[i] = MultiplyRounded(weights[first + i], code[i]);
      sum = MultiplyAdd(sum, target[first + i], weighted[i]);
    }
    sum = LongShiftLeft(sum, 1);
    for (std::size_t i = 0; i < count; ++i) sum = MultiplySubtract(sum, code[i], weighted[i]);
    if (sum > best) {
      best = sum;
      bestRow = row;
    }
  }
  return bestRow;
}

}  // namespace

LineSpectrum SpectrumOf(const Filter& filter, const LineSpectrum& last) noexcept {
  constexpr std::size_t kPlaces = 256;
  const Halves halves = PolynomialsOf(filter);
  LineSpectrum spectrum;
  std::size_t found = 0;
  Long before = ValueAt(halves[0], 0);
  for (std::size_t place = 1; place < kPlaces; ++place) {
    const Long now = ValueAt(halves[found % 2], place);
    if ((before < 0) == (now < 0)) {
      before = now;
      continue;
    }
    const auto low = static_cast<Word>((place - 1) << 7);
    spectrum[found] = static_cast<Word>(low + CrossingOf(before, now));
    if (++found == kOrder) return spectrum;
    before = ValueAt(halves[found % 2], place);
  }
  return last;
}

unsigned QuantizeSpectrum(const LineSpectrum& spectrum, const LineSpectrum& last) noexcept {
  LineSpectrum target;
  for (std::size_t i = 0; i < kOrder; ++i) {
    const Word expected = MultiplyRounded(Subtract(last[i], kMeanSpectrum[i]), kSpectrumPrediction);
    target[i] = Subtract(Subtract(spectrum[i], kMeanSpectrum[i]), expected);
  }
  const LineSpectrum weights = WeightsOf(spectrum);
  unsigned index = 0;
  for (std::size_t band = 0; band < kBands.size(); ++band) {
    index = index << 8 | NearestRow(band, target, weights);
  }
  return index;
}

}  // namespace Quorvex::g723_1
