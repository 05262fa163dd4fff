#include "codecs/engines/g723_1/line_spectrum.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "codecs/engines/g723_1/arithmetic.h"
#include "codecs/engines/g723_1/line_spectrum_tables.h"

namespace Quorvex::g723_1 {

using namespace fixed_point;

namespace {

// Frequencies are kept in order and so far apart.
constexpr Word kLeastFrequency = 0x180;
constexpr Word kMostFrequency = 0x7E00;
constexpr Word kDistance = 0x100;
constexpr Word kDistanceOfRepeated = 0x200;
constexpr Word kTolerance = 4;
constexpr int kMostPasses = 10;

constexpr Word kPredictionOfRepeated = 23552;

bool IsInOrder(const LineSpectrum& spectrum, Word distance) noexcept {
  for (std::size_t j = 1; j < kOrder; ++j) {
    if (spectrum[j - 1] + distance - kTolerance - spectrum[j] > 0) return false;
  }
  return true;
}

// Moves neighbours apart until all are. False if that does not succeed soon.
bool Separate(LineSpectrum& spectrum, Word distance) noexcept {
  for (int pass = 0; pass < kMostPasses; ++pass) {
    spectrum.front() = std::max(spectrum.front(), kLeastFrequency);
    spectrum.back() = std::min(spectrum.back(), kMostFrequency);
    for (std::size_t j = 1; j < kOrder; ++j) {
      const Word missing = Subtract(Add(spectrum[j - 1], distance), spectrum[j]);
      if (missing <= 0) continue;
      const Word half = ShiftRight(missing, 1);
      spectrum[j - 1] = Subtract(spectrum[j - 1], half);
      spectrum[j] = Add(spectrum[j], half);
    }
    if (IsInOrder(spectrum, distance)) return true;
  }
  return false;
}

LineSpectrum Reconstruct(unsigned index, const LineSpectrum& last, Word prediction,
                         Word distance) noexcept {
  constexpr std::array<int, kBands.size()> kShifts = {16, 8, 0};
  LineSpectrum spectrum;
  for (std::size_t band = 0; band < kBands.size(); ++band) {
    const BandVector& vector = kBandCodebooks[band][(index >> kShifts[band]) & 0xFF];
    for (std::size_t i = 0; i < kBands[band].count; ++i) {
      const std::size_t j = kBands[band].first + i;
      const Word expected = MultiplyRounded(Subtract(last[j], kMeanSpectrum[j]), prediction);
      spectrum[j] = Add(Add(vector[i], expected), kMeanSpectrum[j]);
    }
  }
  return Separate(spectrum, distance) ? spectrum : last;
}

// -cos of a frequency, Q15, interpolated. One that was moved below 0 or above 4 kHz has one too.
Word NegativeCosine(Word frequency) noexcept {
  const auto place = static_cast<std::size_t>((frequency >> 7) & 0x1FF);
  const auto fraction = static_cast<Word>(((frequency & 0x7F) << 8) + 0x80);
  const Word here = kCosines[place];
  const Word next = kCosines[(place + 1) % kCosines.size()];
  const Long cosine = MultiplyAdd(Deposit(here), Subtract(next, here), fraction);
  return Negate(Round(LongShiftLeft(cosine, 1)));
}

using Polynomial = std::array<Long, kOrder / 2 + 1>;

// The product of (1 + 2 u z + z^2) with every second u, at half its level after each factor.
Polynomial Multiply(const LineSpectrum& cosines, std::size_t first) noexcept {
  const Word u0 = cosines[first];
  const Word u1 = cosines[first + 2];
  Polynomial p = {};
  p[0] = 0x10000000;
  p[1] = MultiplyAdd(LongMultiply(u0, 0x2000), u1, 0x2000);
  p[2] = LongAdd(LongShiftRight(LongMultiply(u0, u1), 1), 0x20000000);
  for (std::size_t i = 2; i < kOrder / 2; ++i) {
    const Word u = cosines[first + 2 * i];
    p[i + 1] = LongAdd(MultiplyLong(p[i], u), p[i - 1]);
    for (std::size_t j = i; j >= 2; --j) {
      const Long sum = LongAdd(MultiplyLong(p[j - 1], u), LongShiftRight(p[j], 1));
      p[j] = LongAdd(sum, LongShiftRight(p[j - 2], 1));
    }
    p[1] = LongShiftRight(LongAdd(LongShiftRight(Deposit(u), static_cast<int>(i)), p[1]), 1);
    p[0] = LongShiftRight(p[0], 1);
  }
  return p;
}

}  // namespace

LineSpectrum DecodeSpectrum(unsigned index, const LineSpectrum& last) noexcept {
  return Reconstruct(index, last, kSpectrumPrediction, kDistance);
}

LineSpectrum RepeatSpectrum(const LineSpectrum& last) noexcept {
  return Reconstruct(0, last, kPredictionOfRepeated, kDistanceOfRepeated);
}

Filter FilterOf(const LineSpectrum& spectrum) noexcept {
  LineSpectrum cosines;
  std::ranges::transform(spectrum, cosines.begin(), NegativeCosine);
  const Polynomial p = Multiply(cosines, 0);
  const Polynomial q = Multiply(cosines, 1);
  Filter filter;
  for (std::size_t i = 0; i < kOrder / 2; ++i) {
    const Long sum = LongAdd(p[i], p[i + 1]);
    const Long lower = LongAdd(LongSubtract(sum, q[i]), q[i + 1]);
    const Long upper = LongSubtract(LongAdd(sum, q[i]), q[i + 1]);
    filter[i] = Negate(Round(LongShiftLeft(lower, 3)));
    filter[kOrder - 1 - i] = Negate(Round(LongShiftLeft(upper, 3)));
  }
  return filter;
}

Filters FiltersBetween(const LineSpectrum& last, const LineSpectrum& spectrum) noexcept {
  Filters filters;
  for (std::size_t i = 0; i < kSubframes; ++i) {
    const auto weight = static_cast<Word>(-8192 * (static_cast<int>(i) + 1));
    LineSpectrum between;
    for (std::size_t j = 0; j < kOrder; ++j) {
      const Long kept = MultiplyAdd(Deposit(last[j]), weight, last[j]);
      between[j] = Round(MultiplySubtract(kept, weight, spectrum[j]));
    }
    filters[i] = FilterOf(between);
  }
  return filters;
}

}  // namespace Quorvex::g723_1
