// Every second sample of the frame is compared with the samples of a lag before. The lags are in
// three ranges, and the best of a range of shorter ones is favoured when that of the next is a
// multiple of it.
#include "codecs/engines/g729a/open_loop_pitch.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "codecs/engines/g729a/functions.h"
#include "codecs/engines/g729a/split.h"
#include "codecs/engines/sums_of_products.h"

namespace Quorvex::g729a {

using namespace fixed_point;

namespace {

constexpr std::size_t kCompared = kFrameSamples / 2;

// The frame and the longest lag before it, even samples and odd ones apart, so that the samples
// that are compared lie side by side.
class Speech {
 public:
  explicit Speech(const Word* weighted) noexcept {
    // Before the frame 143 samples are known, and one more that no lag asks for stands in.
    phases_[0][0] = 0;
    for (std::size_t i = 0; i < kPhaseSamples; ++i) {
      const Word* const odd = weighted - kMostLag + 2 * i;
      if (i > 0) phases_[0][i] = *(odd - 1);
      phases_[1][i] = *odd;
    }
    const std::int64_t energy = EnergyOf(phases_[1]);
    if (energy > kMostLong) {
      Shift(-3);
    } else if (energy < 1 << 20) {
      Shift(3);
    }
    isPlain_ = EnergyOf(phases_[0]) <= kMostLong && EnergyOf(phases_[1]) <= kMostLong;
  }

  Long Correlation(int lag) const noexcept { return Product(Frame(), Before(lag), 0); }
  // The same by the root of the energy a lag before.
  Word Normalized(Long correlation, int lag) const noexcept {
    const Long root = InverseRoot(Product(Before(lag), Before(lag), 1));
    return Low(SplitMultiply(SplitUp(correlation), SplitUp(root)));
  }

 private:
  static constexpr std::size_t kPhaseSamples = (kMostLag + 1) / 2 + kCompared;
  using Phase = std::array<Word, kPhaseSamples>;

  static std::int64_t EnergyOf(const Phase& phase) noexcept {
    return ExactEnergy(phase.data(), phase.size());
  }

  void Shift(int left) noexcept {
    for (Phase& phase : phases_) {
      for (Word& sample : phase) sample = ShiftLeft(sample, left);
    }
  }

  const Word* Frame() const noexcept { return phases_[0].data() + kPhaseSamples - kCompared; }
  const Word* Before(int lag) const noexcept {
    return phases_[static_cast<std::size_t>(lag % 2)].data() + (kMostLag + 1 - lag) / 2;
  }

  Long Product(const Word* a, const Word* b, Long start) const noexcept {
    return isPlain_ ? 2 * CorrelateUndoubled(a, b, kCompared) + start
                    : Correlate(a, b, kCompared, start);
  }

  std::array<Phase, 2> phases_;
  bool isPlain_;  // the energies fit into 32 bits, so none of the sums, which are less, saturates
};

struct Candidate {
  int lag;
  Long correlation;
};

void Consider(const Speech& speech, int lag, Candidate& best) noexcept {
  const Long correlation = speech.Correlation(lag);
  if (correlation > best.correlation) best = {lag, correlation};
}

Candidate BestFrom(const Speech& speech, int first, int end, int step) noexcept {
  Candidate best = {first, kLeastLong};
  for (int lag = first; lag < end; lag += step) Consider(speech, lag, best);
  return best;
}

bool IsNear(int lag, int other, int distance) noexcept { return std::abs(lag - other) < distance; }

}  // namespace

int OpenLoopLag(const Word* weighted) noexcept {
  const Speech speech(weighted);
  const Candidate low = BestFrom(speech, kLeastLag, 40, 1);
  const Candidate middle = BestFrom(speech, 40, 80, 1);
  Candidate high = BestFrom(speech, 80, kMostLag, 2);
  const int coarse = high.lag;
  Consider(speech, coarse + 1, high);
  Consider(speech, coarse - 1, high);

  Word lowQuality = speech.Normalized(low.correlation, low.lag);
  Word middleQuality = speech.Normalized(middle.correlation, middle.lag);
  const Word highQuality = speech.Normalized(high.correlation, high.lag);
  const Word quarter = ShiftRight(highQuality, 2);
  if (IsNear(2 * middle.lag, high.lag, 5)) middleQuality = Add(middleQuality, quarter);
  if (IsNear(3 * middle.lag, high.lag, 7)) middleQuality = Add(middleQuality, quarter);
  const Word fifth = Multiply(middleQuality, 6554);
  if (IsNear(2 * low.lag, middle.lag, 5)) lowQuality = Add(lowQuality, fifth);
  if (IsNear(3 * low.lag, middle.lag, 7)) lowQuality = Add(lowQuality, fifth);

  const bool isMiddle = middleQuality > lowQuality;
  if (highQuality > (isMiddle ? middleQuality : lowQuality)) return high.lag;
  return isMiddle ? middle.lag : low.lag;
}

}  // namespace Quorvex::g729a
