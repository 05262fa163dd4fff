// The decoder of ITU-T G.729 Annex A.
#pragma once

#include <array>
#include <cstddef>

#include "codecs/engine.h"
#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g729a/concealment.h"
#include "codecs/engines/g729a/excitation.h"
#include "codecs/engines/g729a/frame.h"
#include "codecs/engines/g729a/frame_bits.h"
#include "codecs/engines/g729a/gain_predictor.h"
#include "codecs/engines/g729a/high_pass.h"
#include "codecs/engines/g729a/lsf_predictor.h"
#include "codecs/engines/g729a/lsf_tables.h"
#include "codecs/engines/g729a/post_filter.h"

namespace Quorvex::g729a {

class Decoder {
 public:
  void Start(const EngineModes& modes) noexcept {
    *this = {};
    SetModes(modes);
  }
  void SetModes(const EngineModes& modes) noexcept { modes_ = modes; }
  int BitRate() const noexcept { return modes_.bitRate; }

  void Decode(const CodedFrame& frame, short* samples) noexcept;

 private:
  Lag DecodeLag(std::size_t subframe, const FrameIndices& indices, bool isErased,
                int firstLag) noexcept;
  void DecodeGains(const SubframeIndices& indices, bool isErased, const Subframe& code) noexcept;
  void MakeExcitation(Lag lag, const SubframeIndices& indices, bool isErased,
                      fixed_point::Word* excitation) noexcept;
  void Synthesize(const Filter& filter, fixed_point::Word* excitation,
                  fixed_point::Word* speech) noexcept;

  EngineModes modes_;
  LSFPredictor lsf_;
  LineSpectrum cosines_ = kStartCosines;  // of the frame before
  int lastLag_ = 60;                      // what an erased frame begins with
  fixed_point::Word sharpening_ = kLeastSharpening;
  fixed_point::Word pitchGain_ = 0, codeGain_ = 0;  // Q14 and Q1
  GainPredictor gainPredictor_;
  RandomPulses randomPulses_;
  std::array<fixed_point::Word, kExcitationHistory + kFrameSamples> excitation_{};
  std::array<fixed_point::Word, kOrder + kFrameSamples> speech_{};  // synthesised
  PostFilter postFilter_;
  HighPass highPass_;
};

}  // namespace Quorvex::g729a
