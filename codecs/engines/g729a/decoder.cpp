// The signal path of each subframe:
//
//     lag ── past excitation ─ pitch gain ─┐            lag_code, excitation
//     pulses ─ sharpening ──── code gain ──┴─ sum       gain_predictor
//                                              │
//     line spectrum ─ mean with the last ─── 1/A(z)     lsf_predictor, line_spectrum, filters
//                                              │
//                       pitch, formants, tilt, level    post_filter
//                                              │
//                                          high pass    high_pass
//
// An erased frame goes the same way with parameters of concealment.h.
#include "codecs/engines/g729a/decoder.h"

#include <algorithm>

#include "codecs/engines/g729a/filters.h"
#include "codecs/engines/g729a/gain_tables.h"
#include "codecs/engines/g729a/lag_code.h"
#include "codecs/engines/g729a/line_spectrum.h"

namespace Quorvex::g729a {

using namespace fixed_point;

void Decoder::Decode(const CodedFrame& frame, short* samples) noexcept {
  const FrameIndices indices = frame.isErased ? FrameIndices{} : Unpack(frame.data);
  const LineSpectrum cosines = CosinesOf(frame.isErased ? lsf_.Repeat() : lsf_.Decode(indices.lsf));
  const Filter filters[kSubframes] = {FilterOf(Between(cosines_, cosines)), FilterOf(cosines)};
  cosines_ = cosines;

  int firstLag = 0;
  for (std::size_t i = 0; i < kSubframes; ++i) {
    const std::size_t begin = i * kSubframeSamples;
    Word* const excitation = excitation_.data() + kExcitationHistory + begin;
    Word* const speech = speech_.data() + kOrder + begin;
    const Lag lag = DecodeLag(i, indices, frame.isErased, firstLag);
    if (i == 0) firstLag = lag.samples;
    MakeExcitation(lag, indices.subframes[i], frame.isErased, excitation);
    Synthesize(filters[i], excitation, speech);
    if (modes_.postFilter) {
      postFilter_.Filter(filters[i], lag.samples, speech, samples + begin);
    } else {
      std::copy_n(speech, kSubframeSamples, samples + begin);
    }
  }
  highPass_.FilterOutput({samples, kFrameSamples});
  std::shift_left(excitation_.begin(), excitation_.end(), kFrameSamples);
  std::shift_left(speech_.begin(), speech_.end(), kFrameSamples);
}

// The second subframe's lag is beside the one that the first was decoded with.
Lag Decoder::DecodeLag(std::size_t subframe, const FrameIndices& indices, bool isErased,
                       int firstLag) noexcept {
  const unsigned index = indices.subframes[subframe].lag;
  const bool isDamaged = subframe == 0 && indices.parity != ParityOf(index);
  if (isErased || isDamaged) {
    const Lag lag{lastLag_, 0};
    lastLag_ = LongerLag(lastLag_);
    return lag;
  }
  const Lag lag = subframe == 0 ? FirstLag(index) : SecondLag(index, LeastSecondLag(firstLag));
  lastLag_ = lag.samples;
  return lag;
}

void Decoder::MakeExcitation(Lag lag, const SubframeIndices& indices, bool isErased,
                             Word* excitation) noexcept {
  RepeatExcitation(lag, excitation);
  unsigned positions = indices.positions;
  unsigned signs = indices.signs;
  if (isErased) {
    positions = randomPulses_.Positions();
    signs = randomPulses_.Signs();
  }
  Subframe code = PulsesOf(positions, signs);
  Sharpen(lag.samples, sharpening_, code.data());
  DecodeGains(indices, isErased, code);
  AddCode(pitchGain_, codeGain_, code, excitation);
}

void Decoder::DecodeGains(const SubframeIndices& indices, bool isErased,
                          const Subframe& code) noexcept {
  if (isErased) {
    pitchGain_ = FallingPitchGain(pitchGain_);
    codeGain_ = FallingCodeGain(codeGain_);
    gainPredictor_.UpdateLost();
  } else {
    const GainSum gains = SumOfRows(kFirstRows[indices.firstGain], kSecondRows[indices.secondGain]);
    pitchGain_ = gains.pitch;
    codeGain_ = CodeGainOf(gainPredictor_.Predict(code), gains.factor);
    gainPredictor_.Update(gains.factor);
  }
  sharpening_ = SharpeningOf(pitchGain_);
}

// What is too loud is made again from a quarter of the excitation, of which the past is a part.
void Decoder::Synthesize(const Filter& filter, Word* excitation, Word* speech) noexcept {
  if (g729a::Synthesize(filter, excitation, kSubframeSamples, speech)) return;
  for (Word& sample : excitation_) sample = ShiftRight(sample, 2);
  g729a::Synthesize(filter, excitation, kSubframeSamples, speech);
}

}  // namespace Quorvex::g729a
