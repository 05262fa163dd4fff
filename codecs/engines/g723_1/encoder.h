// The encoder of ITU-T G.723.1 at 5.3 and 6.3 kbit/s:
//
//     samples -> high-pass -> four windows -> filters -> line spectrum of the last -> quantiser
//                    |                           |
//         frame, 60 samples back -> perceptual weighting -> open-loop pitch of each half
//                                                |
//             each subframe -> lag, pitch gains and pulses that come nearest to it
//
// Where nobody speaks, and the mode is on, the noise is coded instead.
#pragma once

#include <array>
#include <cstddef>

#include "codecs/engine.h"
#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g723_1/frame.h"
#include "codecs/engines/g723_1/frame_bits.h"
#include "codecs/engines/g723_1/high_pass.h"
#include "codecs/engines/g723_1/line_spectrum_tables.h"
#include "codecs/engines/g723_1/linear_prediction.h"
#include "codecs/engines/g723_1/silence_encoder.h"
#include "codecs/engines/g723_1/subframe_encoder.h"
#include "codecs/engines/g723_1/voice_activity.h"
#include "codecs/engines/g723_1/weighted_synthesis.h"

namespace Quorvex::g723_1 {

class Encoder {
 public:
  void Start(const EngineModes& modes) noexcept {
    *this = Encoder();
    SetModes(modes);
  }
  void SetModes(const EngineModes& modes) noexcept { modes_ = modes; }

  /// @param samples  kFrameSamples. @param data  receives kMostFrameBytes at most.
  /// @return the length of the frame.
  std::size_t Encode(const short* samples, unsigned char* data) noexcept;

 private:
  /// Samples before the new ones that the windows begin with.
  static constexpr std::size_t kOldSamples = kWindowSamples - kSubframeSamples;

  /// What is known of a frame before anything of it is coded.
  struct Analysis {
    std::array<Autocorrelation, kSubframes> windows;
    Filters filters;  ///< of the windows
    bool isSine = false;
    std::array<int, kHalves> lags = {};  ///< open-loop
    std::array<FormantFilter, kSubframes> weighting;
    std::array<HarmonicFilter, kSubframes> harmonics;
  };

  void Append(const short* samples) noexcept;
  Analysis Analyze() noexcept;
  void Predict(Analysis& analysis) noexcept;
  void Weight(Analysis& analysis) noexcept;
  bool IsSpeech(const Analysis& analysis) noexcept;
  void EncodeSpeech(const Analysis& analysis, FrameIndices& indices) noexcept;
  void EncodeSilence(const Analysis& analysis, FrameIndices& indices) noexcept;
  std::array<SubframeFilters, kSubframes> FiltersTo(const LineSpectrum& spectrum,
                                                    const Analysis& analysis) noexcept;

  EngineModes modes_;
  HighPass highPass_;
  std::array<fixed_point::Word, kOldSamples + kFrameSamples> samples_ = {};
  SineDetector sineDetector_;
  LineSpectrum spectrum_ = kMeanSpectrum;  // of the last frame, as it was sent
  SubframeEncoder subframeEncoder_;
  VoiceActivity voiceActivity_;
  SilenceEncoder silenceEncoder_;
  // Both with what came before the frame.
  std::array<fixed_point::Word, kExcitationHistory + kFrameSamples> weighted_ = {};
  std::array<fixed_point::Word, kExcitationHistory + kFrameSamples> excitation_ = {};
};

}  // namespace Quorvex::g723_1
