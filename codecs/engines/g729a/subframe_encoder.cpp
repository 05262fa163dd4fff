// Everything is compared behind 1 / A(z / 0.75), which leaves more error where the voice is loud.
// The target is what the excitation has to make there. The pitch takes its part first, the pulses
// get what it leaves, then the gains of both are chosen anew.
#include "codecs/engines/g729a/subframe_encoder.h"

#include <algorithm>

#include "codecs/engines/backward_filter.h"
#include "codecs/engines/g729a/closed_loop_pitch.h"
#include "codecs/engines/g729a/filters.h"
#include "codecs/engines/g729a/fixed_codebook_search.h"
#include "codecs/engines/g729a/gain_search.h"

namespace Quorvex::g729a {

using namespace fixed_point;

namespace {

using Memory = std::array<Word, kOrder>;

// Samples through 1 / A(z / 0.75).
Subframe Weight(const Filter& weighted, const Word* samples, const Memory& memory) noexcept {
  std::array<Word, kOrder + kSubframeSamples> filtered;
  std::ranges::copy(memory, filtered.begin());
  Synthesize(weighted, samples, kSubframeSamples, &filtered[kOrder]);
  Subframe result;
  std::copy_n(&filtered[kOrder], kSubframeSamples, result.begin());
  return result;
}

Subframe ResponseOf(const Filter& weighted) noexcept {
  constexpr Subframe kPulse = {4096};  // 1
  return Weight(weighted, kPulse.data(), Memory{});
}

// The vector of the pitch with its gain: Q0 x Q14.
Word PitchPart(Word sample, Word gain) noexcept {
  return High(LongShiftLeft(LongMultiply(sample, gain), 1));
}
// The vector of the pulses with theirs: Q12 x Q1.
Word CodePart(Word sample, Word gain) noexcept {
  return High(LongShiftLeft(LongMultiply(sample, gain), 2));
}

// What a pitch of this gain leaves of the target.
Subframe Remainder(const Subframe& target, const Subframe& pitchVector, Word gain) noexcept {
  Subframe remainder;
  std::ranges::transform(target, pitchVector, remainder.begin(), [gain](Word sample, Word pitch) {
    return Subtract(sample, PitchPart(pitch, gain));
  });
  return remainder;
}

}  // namespace

SubframeIndices SubframeEncoder::Encode(std::size_t number, int openLoopLag, const Filter& weighted,
                                        Word* excitation) noexcept {
  Subframe response = ResponseOf(weighted);
  const Subframe target = Weight(weighted, excitation, error_);
  const Subframe backward = FilterBackward(target, response);
  const CodedLag pitch = number == 0 ? SearchFirstLag(openLoopLag, backward, excitation)
                                     : SearchSecondLag(firstLag_, backward, excitation);
  const int lag = pitch.lag.samples;
  if (number == 0) firstLag_ = lag;

  const Subframe pitchVector = Weight(weighted, excitation, Memory{});
  PitchGain pitchGain = SearchPitchGain(target, pitchVector);
  const bool isTamed = taming_.Holds(pitch.lag);
  if (isTamed) pitchGain.gain = std::min(pitchGain.gain, kTamedPitchGain);

  Sharpen(lag, sharpening_, response.data());
  const FixedCode fixedCode =
      SearchFixedCode(Remainder(target, pitchVector, pitchGain.gain), response);
  Subframe code = PulsesOf(fixedCode.positions, fixedCode.signs);
  Sharpen(lag, sharpening_, code.data());

  const PredictedGain predicted = gainPredictor_.Predict(code);
  const CodedGains coded = SearchGains({.target = target,
                                        .pitchVector = pitchVector,
                                        .codeVector = fixedCode.filtered,
                                        .pitch = pitchGain,
                                        .predicted = predicted,
                                        .isTamed = isTamed});
  const GainSum& gains = coded.sum;
  const Word codeGain = CodeGainOf(predicted, gains.factor);
  gainPredictor_.Update(gains.factor);
  sharpening_ = SharpeningOf(gains.pitch);
  taming_.Update(lag, gains.pitch);
  AddCode(gains.pitch, codeGain, code, excitation);
  for (std::size_t i = 0; i < kOrder; ++i) {
    const std::size_t n = kSubframeSamples - kOrder + i;
    error_[i] = Subtract(target[n], Add(PitchPart(pitchVector[n], gains.pitch),
                                        CodePart(fixedCode.filtered[n], codeGain)));
  }
  return {.lag = pitch.index,
          .positions = fixedCode.positions,
          .signs = fixedCode.signs,
          .firstGain = coded.firstIndex,
          .secondGain = coded.secondIndex};
}

}  // namespace Quorvex::g729a
