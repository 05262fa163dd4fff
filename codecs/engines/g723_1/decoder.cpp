// The signal path of each subframe:
//
//     lag ── past excitation ─ five gains ─┐            excitation
//     pulses ───────────────────── gain ───┴─ sum
//                                              │
//                                            pitch      pitch_post_filter
//                                              │
//     line spectrum ─ mean with the last ─── 1/(1-A)    line_spectrum
//                                              │
//                               formants, tilt, level   post_filter
//
// Of a frame of noise the excitation comes from comfort_noise, of one that was lost from
// concealment; neither has its pitch filtered.
#include "codecs/engines/g723_1/decoder.h"

#include <algorithm>

#include "codecs/engines/g723_1/excitation.h"
#include "codecs/engines/g723_1/line_spectrum.h"
#include "codecs/engines/g723_1/pitch_post_filter.h"
#include "codecs/engines/g723_1/synthesis.h"

namespace Quorvex::g723_1 {

using namespace fixed_point;

void Decoder::Decode(const CodedFrame& frame, short* samples) noexcept {
  FrameIndices indices;
  const bool isLost = frame.isErased || !Unpack(frame.data, indices);
  // What was lost is taken for what the frame before was.
  const bool isSpeech = isLost ? wasSpeech_ : IsSpeech(indices.type);
  if (isLost) indices.type = FrameType::kUntransmitted;
  const LineSpectrum last = spectrum_;
  FrameExcitation heard;
  if (!isSpeech) {
    MakeNoise(indices, heard);
  } else if (isLost) {
    Conceal(heard);
  } else {
    DecodeSpeech(indices, heard);
  }
  wasSpeech_ = isSpeech;
  std::shift_left(excitation_.begin(), excitation_.end(), kFrameSamples);
  Synthesize(FiltersBetween(last, spectrum_), heard, samples);
}

void Decoder::DecodeSpeech(const FrameIndices& indices, FrameExcitation& heard) noexcept {
  spectrum_ = DecodeSpectrum(indices.spectrum, spectrum_);
  noiseSpectrum_ = spectrum_;
  for (std::size_t i = 0; i < kSubframes; ++i) {
    Word* const excitation = Excitation() + i * kSubframeSamples;
    MakeExcitation(i, indices, AdaptiveVector(i, indices, excitation), excitation);
  }
  const NormalizedExcitation normalized(excitation_.data());
  concealment_.Learn(indices, normalized);
  noise_.Restart();
  if (modes_.postFilter) {
    const Word weight =
        indices.type == FrameType::kAtHighRate ? kPitchWeightAtHighRate : kPitchWeightAtLowRate;
    FilterPitch(Excitation(), normalized.samples.data() + kExcitationHistory, indices.halfLags,
                weight, heard.data());
  } else {
    std::copy_n(Excitation(), kFrameSamples, heard.begin());
  }
}

void Decoder::Conceal(FrameExcitation& heard) noexcept {
  spectrum_ = RepeatSpectrum(spectrum_);
  const bool isPast = concealment_.Repeat(Excitation());
  std::copy_n(Excitation(), kFrameSamples, heard.begin());
  if (!isPast) excitation_.fill(0);
}

void Decoder::MakeNoise(const FrameIndices& indices, FrameExcitation& heard) noexcept {
  if (indices.type == FrameType::kSilence) {
    noise_.SetLevel(NoiseLevelOf(indices.noiseLevel));
    noiseSpectrum_ = DecodeSpectrum(indices.spectrum, spectrum_);
  } else if (wasSpeech_) {
    noise_.SetLevel(NoiseLevelOf(NoiseLevelIndex(concealment_.Energy())));
  }
  spectrum_ = noiseSpectrum_;
  noise_.Make(wasSpeech_, Excitation());
  std::copy_n(Excitation(), kFrameSamples, heard.begin());
}

void Decoder::Synthesize(const Filters& filters, const FrameExcitation& heard,
                         short* samples) noexcept {
  for (std::size_t i = 0; i < kSubframes; ++i) {
    const std::size_t begin = i * kSubframeSamples;
    Word* const speech = speech_.data() + kOrder;
    g723_1::Synthesize(filters[i], heard.data() + begin, speech);
    if (modes_.postFilter) {
      postFilter_.Filter(filters[i], speech, samples + begin);
    } else {
      std::transform(speech, speech + kSubframeSamples, samples + begin,
                     [](Word sample) { return ShiftLeft(sample, 1); });
    }
    std::shift_left(speech_.begin(), speech_.end(), kSubframeSamples);
  }
}

}  // namespace Quorvex::g723_1
