// Two polynomials, A(z) plus and minus its mirror image, are zero on the unit circle in turns: at
// the line spectrum. On the circle, without the zeros that both have at any rate, they are sums of
// cosines.
#include "codecs/engines/g723_1/line_spectrum_search.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <tuple>

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

constexpr std::size_t kPlaces = 256;  // where the polynomials are looked at, from 0 up to 4 kHz

// By the multiple of the frequency, so that places can be looked at side by side.
using Cosines = std::array<std::array<Word, kPlaces>, kHalfOrder + 1>;
consteval Cosines CosinesOfPlaces() {
  Cosines cosines = {};
  for (std::size_t j = 0; j <= kHalfOrder; ++j) {
    for (std::size_t place = 0; place < kPlaces; ++place) {
      cosines[j][place] = kCosines[place * j % kCosines.size()];
    }
  }
  return cosines;
}
constexpr Cosines kCosinesOfPlaces = CosinesOfPlaces();

// A polynomial on the circle. Its sums saturate in many frames, so all places are looked at in 16
// bits first, which is enough to tell nearly every sign.
class Polynomial {
 public:
  explicit Polynomial(const Half& half) noexcept : half_(half) {
    for (std::size_t place = 0; place < kPlaces; ++place) {
      Word sum = 0;
      for (std::size_t j = 0; j <= kHalfOrder; ++j) {
        const auto product = static_cast<Word>((half[j] * kCosinesOfPlaces[j][place]) >> 16);
        const auto next = static_cast<Word>(sum + product);
        sum = std::clamp<Word>(next, -kRoughLimit, kRoughLimit);
      }
      rough_[place] = sum;
    }
  }

  // A doubled product does not saturate, as the cosines are Q14.
  Long ValueAt(std::size_t place) const noexcept {
    Long sum = 0;
    for (std::size_t j = 0; j <= kHalfOrder; ++j) {
      sum = LongAdd(sum, 2 * half_[j] * kCosinesOfPlaces[j][place]);
    }
    return sum;
  }

  bool IsNegativeAt(std::size_t place) const noexcept {
    if (rough_[place] > kRoughError) return false;
    if (rough_[place] < -kRoughError) return true;
    return ValueAt(place) < 0;
  }

 private:
  static constexpr Word kRoughLimit = 0x4000;  // where values saturate: 2^31 / 2^17
  static constexpr Word kRoughError = 6;       // six products, each less than 1 too low

  const Half& half_;
  std::array<Word, kPlaces> rough_;  // values / 2^17
};

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

constexpr std::size_t kRows = kBandCodebooks[0].size();

// A codebook by the frequency within the band, so that the rows can be compared side by side.
using Columns = std::array<std::array<Word, kRows>, std::tuple_size_v<BandVector>>;

consteval std::array<Columns, kBands.size()> ColumnsOfBands() {
  std::array<Columns, kBands.size()> columns = {};
  for (std::size_t band = 0; band < kBands.size(); ++band) {
    for (std::size_t row = 0; row < kRows; ++row) {
      for (std::size_t i = 0; i < kBands[band].count; ++i) {
        columns[band][i][row] = kBandCodebooks[band][row][i];
      }
    }
  }
  return columns;
}
constexpr std::array<Columns, kBands.size()> kColumns = ColumnsOfBands();

consteval Long MostCode() {
  Long most = 0;
  for (const auto& codebook : kBandCodebooks) {
    for (const BandVector& vector : codebook) {
      for (const Word code : vector) most = std::max<Long>(most, code < 0 ? -code : code);
    }
  }
  return most;
}
// Of a target: twice as much, less a code, still has 16 bits. Then nothing saturates: each of four
// frequencies adds four times target x code, and takes away twice a square of a code.
constexpr Long kMostTarget = (kMostWord - MostCode()) / 2;
static_assert(2 * MostCode() <= kMostWord);
static_assert(4 * (std::int64_t{4} * kMostTarget * MostCode() +
                   std::int64_t{2} * MostCode() * MostCode()) <=
              kMostLong);

using Scores = std::array<Long, kRows>;

void ScoreSaturating(std::size_t band, const Word* target, const Word* weights,
                     Scores& scores) noexcept {
  const std::size_t count = kBands[band].count;
  for (std::size_t row = 0; row < kRows; ++row) {
    const BandVector& code = kBandCodebooks[band][row];
    BandVector weighted;
    Long sum = 0;
    for (std::size_t i = 0; i < count; ++i) {
      weighted[i] = MultiplyRounded(weights[i], code[i]);
      sum = MultiplyAdd(sum, target[i], weighted[i]);
    }
    sum = LongShiftLeft(sum, 1);
    for (std::size_t i = 0; i < count; ++i) sum = MultiplySubtract(sum, code[i], weighted[i]);
    scores[row] = sum;
  }
}

// The same, halved: (2 x target - code) x weight x code.
template <std::size_t kCount>
void ScorePlainly(const Columns& columns, const Word* target, const Word* weights,
                  Scores& scores) noexcept {
  for (std::size_t row = 0; row < kRows; ++row) {
    Long sum = 0;
    for (std::size_t i = 0; i < kCount; ++i) {
      const Word code = columns[i][row];
      const auto rest = static_cast<Word>(2 * target[i] - code);
      sum += MultiplyRoundedNarrow(code, weights[i]) * rest;
    }
    scores[row] = sum;
  }
}

void Score(std::size_t band, const Word* target, const Word* weights, Scores& scores) noexcept {
  const std::size_t count = kBands[band].count;
  const bool isPlain = std::all_of(target, target + count, [](Word value) {
    return value >= -kMostTarget && value <= kMostTarget;
  });
  if (!isPlain) {
    ScoreSaturating(band, target, weights, scores);
  } else if (count == 3) {
    ScorePlainly<3>(kColumns[band], target, weights, scores);
  } else {
    ScorePlainly<4>(kColumns[band], target, weights, scores);
  }
}

// The first of the largest score, or 0 when none is above -1.
unsigned BestRow(const Scores& scores) noexcept {
  Long best = -1;
  for (const Long score : scores) best = std::max(best, score);
  const auto row = std::ranges::find(scores, best);
  return best < 0 ? 0 : static_cast<unsigned>(row - scores.begin());
}

}  // namespace

LineSpectrum SpectrumOf(const Filter& filter, const LineSpectrum& last) noexcept {
  const Halves halves = PolynomialsOf(filter);
  const std::array<Polynomial, 2> polynomials = {Polynomial(halves[0]), Polynomial(halves[1])};
  LineSpectrum spectrum;
  std::size_t found = 0;
  bool wasNegative = polynomials[0].IsNegativeAt(0);
  for (std::size_t place = 1; place < kPlaces; ++place) {
    const Polynomial& polynomial = polynomials[found % 2];
    if (polynomial.IsNegativeAt(place) == wasNegative) continue;
    const Word crossing = CrossingOf(polynomial.ValueAt(place - 1), polynomial.ValueAt(place));
    spectrum[found] = static_cast<Word>(((place - 1) << 7) + static_cast<std::size_t>(crossing));
    if (++found == kOrder) return spectrum;
    wasNegative = polynomials[found % 2].IsNegativeAt(place);
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
  Scores scores;
  unsigned index = 0;
  for (std::size_t band = 0; band < kBands.size(); ++band) {
    const std::size_t first = kBands[band].first;
    Score(band, target.data() + first, weights.data() + first, scores);
    index = index << 8 | BestRow(scores);
  }
  return index;
}

}  // namespace Quorvex::g723_1
