#include "codecs/engines/g723_1/concealment.h"

#include <algorithm>

#include "codecs/engines/g723_1/arithmetic.h"
#include "codecs/engines/g723_1/comfort_noise_tables.h"
#include "codecs/engines/g723_1/fixed_codebook_tables.h"
#include "codecs/engines/sums_of_products.h"

namespace Quorvex::g723_1 {

using namespace fixed_point;

namespace {

constexpr int kMostLost = 3;  // from there on there is silence
constexpr Word kFall = 0x6000;
constexpr int kLagsAround = 3;

// The last half of a frame, and what it is like the samples before.
class LastHalf {
 public:
  // No correlation is larger than the energies, so that none saturates where those do not.
  explicit LastHalf(const NormalizedExcitation& excitation) noexcept
      : begin_(excitation.samples.data() + kExcitationHistory + kHalfSamples),
        isPlain_(ExactEnergy(begin_ - kReach, kReach + kHalfSamples) <= kMostLong) {}

  Long LikenessAt(int lag) const noexcept { return Product(begin_, begin_ - lag); }
  Word EnergyAt(int lag) const noexcept { return Round(Product(begin_ - lag, begin_ - lag)); }

 private:
  static constexpr std::size_t kReach = kExcitationHistory;  // the longest lag

  Long Product(const Word* a, const Word* b) const noexcept {
    return isPlain_ ? 2 * CorrelateUndoubled(a, b, kHalfSamples) : Correlate(a, b, kHalfSamples);
  }

  const Word* begin_;
  bool isPlain_;
};

// The lag near the one that was sent at which the half is most like what was before; 0 if it is
// not, or not enough for a voice.
int VoiceLag(const LastHalf& half, int sentLag) noexcept {
  const int middle = std::min(sentLag, kMostLag);
  int best = 0;
  Long most = 0;
  for (int lag = middle - kLagsAround; lag <= middle + kLagsAround; ++lag) {
    const Long likeness = half.LikenessAt(lag);
    if (likeness <= most) continue;
    most = likeness;
    best = lag;
  }
  const Word likeness = Round(most);
  if (likeness <= 0) return 0;
  const Long energies = LongShiftRight(LongMultiply(half.EnergyAt(best), half.EnergyAt(0)), 3);
  return MultiplySubtract(energies, likeness, likeness) < 0 ? best : 0;
}

}  // namespace

NormalizedExcitation::NormalizedExcitation(const Word* history) noexcept
    : shift(NormalizedCopy(history, samples.size(), samples.data())) {}

void Concealment::Learn(const FrameIndices& indices,
                        const NormalizedExcitation& excitation) noexcept {
  const LastHalf half(excitation);
  lost_ = 0;
  energy_ = half.EnergyAt(0);
  shift_ = excitation.shift;
  lag_ = VoiceLag(half, indices.halfLags[1]);
  gain_ = kCodeGains[(indices.subframes[2].codeGain + indices.subframes[3].codeGain) / 2];
}

bool Concealment::Repeat(Word* excitation) noexcept {
  lost_ = std::min(lost_ + 1, kMostLost);
  gain_ = MultiplyRounded(gain_, kFall);
  if (lost_ == kMostLost) {
    std::fill_n(excitation, kFrameSamples, Word{0});
    return false;
  }
  if (lag_ == 0) {
    for (std::size_t n = 0; n < kFrameSamples; ++n) {
      seed_ = NextRandom(seed_);
      excitation[n] = Multiply(gain_, static_cast<Word>(seed_));
    }
    return false;
  }
  for (std::size_t n = 0; n < kFrameSamples; ++n) excitation[n] = *(excitation + n - lag_);
  for (std::size_t n = 0; n < kFrameSamples; ++n) excitation[n] = Multiply(excitation[n], kFall);
  return true;
}

Long Concealment::Energy() const noexcept {
  return MultiplyLong(LongShiftLeft(energy_, 16 - 2 * shift_), kEnergyScales[0]);
}

}  // namespace Quorvex::g723_1
