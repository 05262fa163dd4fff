// Whether somebody speaks.
#pragma once

#include <array>

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g723_1/frame.h"

namespace Quorvex::g723_1 {

class VoiceActivity {
 public:
  /// Decides on the next frame. @param samples  its kFrameSamples new ones behind the high-pass,
  /// with kOrder before.
  bool IsSpeech(const fixed_point::Word* samples, bool isSine) noexcept;
  /// The open-loop lags of a frame, for the next one; also of a frame that is no speech.
  void SetLags(const std::array<int, kHalves>& lags) noexcept;
  /// Whether the noise is not adapted to at present, so that its filter may be replaced.
  bool TakesNoise() const noexcept { return adaptation_ == 0; }
  void SetNoiseFilter(const Filter& filter) noexcept { noiseFilter_ = filter; }

 private:
  int hangover_ = 3;
  int speechFrames_ = 0;
  int adaptation_ = 0;
  fixed_point::Long energy_ = 0x400;
  fixed_point::Long level_ = 0x400;
  std::array<int, 2 * kHalves> lags_ = {1, 1, 60, 60};
  Filter noiseFilter_ = {};
};

}  // namespace Quorvex::g723_1
