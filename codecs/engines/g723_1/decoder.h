// The decoder of ITU-T G.723.1.
#pragma once

#include <array>
#include <cstddef>

#include "codecs/engine.h"
#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g723_1/comfort_noise.h"
#include "codecs/engines/g723_1/concealment.h"
#include "codecs/engines/g723_1/frame.h"
#include "codecs/engines/g723_1/frame_bits.h"
#include "codecs/engines/g723_1/line_spectrum_tables.h"
#include "codecs/engines/g723_1/post_filter.h"

namespace Quorvex::g723_1 {

class Decoder {
 public:
  void Start(const EngineModes& modes) noexcept {
    *this = Decoder();
    SetModes(modes);
  }
  void SetModes(const EngineModes& modes) noexcept { modes_ = modes; }
  int BitRate() const noexcept { return modes_.bitRate; }

  void Decode(const CodedFrame& frame, short* samples) noexcept;

 private:
  /// The excitation of a frame as the synthesis is given it.
  using FrameExcitation = std::array<fixed_point::Word, kFrameSamples>;

  void DecodeSpeech(const FrameIndices& indices, FrameExcitation& heard) noexcept;
  void Conceal(FrameExcitation& heard) noexcept;
  void MakeNoise(const FrameIndices& indices, FrameExcitation& heard) noexcept;
  void Synthesize(const Filters& filters, const FrameExcitation& heard, short* samples) noexcept;
  fixed_point::Word* Excitation() noexcept { return excitation_.data() + kExcitationHistory; }

  EngineModes modes_;
  LineSpectrum spectrum_ = kMeanSpectrum;  // of the frame before
  LineSpectrum noiseSpectrum_ = kMeanSpectrum;
  bool wasSpeech_ = true;
  Concealment concealment_;
  ComfortNoise noise_;
  std::array<fixed_point::Word, kExcitationHistory + kFrameSamples> excitation_{};
  std::array<fixed_point::Word, kOrder + kSubframeSamples> speech_{};  // synthesised
  PostFilter postFilter_;
};

}  // namespace Quorvex::g723_1
