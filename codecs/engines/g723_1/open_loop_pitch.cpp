// Half a frame is compared with the samples of a lag before, by the square of their correlation in
// relation to their energy. A lag that is much longer than the best so far has to be clearly
// better, so that no multiple of the true lag is taken.
#include "codecs/engines/g723_1/open_loop_pitch.h"

#include <cstddef>

#include "codecs/engines/sums_of_products.h"

namespace Quorvex::g723_1 {

using namespace fixed_point;

namespace {

// How well a lag does: square / energy / 2^exponent.
struct Quality {
  int exponent;
  Word square;
  Word energy;
};

// @param correlation  above 0.
Quality QualityOf(Long correlation, Long energy) noexcept {
  const int norm = LongNorm(correlation);
  const Word rounded = Round(LongShiftLeft(correlation, norm));
  const Long square = LongMultiply(rounded, rounded);
  const int squareNorm = LongNorm(square);
  const int energyNorm = LongNorm(energy);
  Quality quality = {2 * norm + squareNorm - energyNorm, High(LongShiftLeft(square, squareNorm)),
                     Round(LongShiftLeft(energy, energyNorm))};
  if (quality.square >= quality.energy) {
    quality.square = static_cast<Word>(quality.square >> 1);
    --quality.exponent;
  }
  return quality;
}

// @param isMuchLonger  the lag of this quality.
bool IsBetter(const Quality& quality, const Quality& best, bool isMuchLonger) noexcept {
  if (quality.exponent + 1 < best.exponent) return true;
  if (quality.exponent > best.exponent) return false;
  const auto square =
      quality.exponent < best.exponent ? static_cast<Word>(best.square >> 1) : best.square;
  const Long product = LongMultiply(quality.square, best.energy);
  if (MultiplySubtract(product, quality.energy, square) <= 0) return false;
  if (!isMuchLonger) return true;
  const Long most = MultiplyAdd(LongNegate(product >> 2), quality.square, best.energy);
  return MultiplySubtract(most, quality.energy, square) > 0;
}

}  // namespace

int OpenLoopLag(const Word* samples) noexcept {
  constexpr int kMuchLonger = 18;
  int bestLag = kLeastLag;
  Quality best = {30, 0x4000, kMostWord};
  const Word* before = samples - (kLeastLag - 1);
  Long energy = Correlate(before, before, kHalfSamples);
  for (int lag = kLeastLag; lag <= kMostLag; ++lag) {
    --before;
    const Word leaving = before[kHalfSamples];
    energy = MultiplySubtract(energy, leaving, leaving);
    energy = MultiplyAdd(energy, *before, *before);
    const Long correlation = Correlate(samples, before, kHalfSamples);
    if (correlation <= 0) continue;
    const Quality quality = QualityOf(correlation, energy);
    if (!IsBetter(quality, best, lag >= bestLag + kMuchLonger)) continue;
    best = quality;
    bestLag = lag;
  }
  return bestLag;
}

}  // namespace Quorvex::g723_1
