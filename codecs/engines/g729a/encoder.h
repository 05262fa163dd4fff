// The encoder of G.729 Annex A:
//
//     samples -> high-pass -> 240 of them -> filter -> line spectrum -> quantiser -> A(z)
//                                |
//                 frame -> A(z): residual -> 1 / A(z / 0.75), flattened -> open-loop pitch
//                                |
//             each subframe -> lag, pulses and gains that come nearest in 1 / A(z / 0.75)
//
// The frame that is coded ends 40 samples before the newest one.
#pragma once

#include <array>
#include <cstddef>

#include "codecs/engine.h"
#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g729a/excitation.h"
#include "codecs/engines/g729a/frame.h"
#include "codecs/engines/g729a/high_pass.h"
#include "codecs/engines/g729a/linear_prediction.h"
#include "codecs/engines/g729a/lsf_predictor.h"
#include "codecs/engines/g729a/subframe_encoder.h"

namespace Quorvex::g729a {

class Encoder {
 public:
  void Start(const EngineModes&) noexcept { *this = Encoder(); }
  /// Nothing can be chosen: there is one bit rate, and the input filter is always on.
  void SetModes(const EngineModes&) noexcept {}

  /// @param samples  kFrameSamples. @param data  receives kFrameBytes. @return kFrameBytes.
  std::size_t Encode(const short* samples, unsigned char* data) noexcept;

 private:
  using Filters = std::array<Filter, kSubframes>;

  void Append(const short* samples) noexcept;
  Filters QuantizeFilters(LSFIndices& indices) noexcept;
  void Weight(const Filters& quantized, const Filters& weighted) noexcept;

  HighPass highPass_;
  std::array<fixed_point::Word, kAnalysisSamples> samples_{};
  LinearPrediction prediction_;
  LineSpectrum cosines_ = kStartCosines;    // of the last frame's filter
  LineSpectrum quantized_ = kStartCosines;  // what was sent of them
  LSFPredictor lsfPredictor_;
  SubframeEncoder subframeEncoder_;
  // Both with what came before the frame.
  std::array<fixed_point::Word, kExcitationHistory + kFrameSamples> excitation_{};
  std::array<fixed_point::Word, kMostLag + kFrameSamples> weighted_{};
};

}  // namespace Quorvex::g729a
