// Whether somebody speaks.
#pragma once

#include <array>

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g723_1/frame.h"

namespace Quorvex::g723_1 {

/// Compares the energy of what a filter of the noise leaves with the level of the noise. Both adapt
/// while there is neither a voice's pitch nor a sine.
class VoiceActivity {
 public:
  /// Decides on the next frame. To be called for every frame while it is asked for.
  /// @param samples  its new ones behind the high-pass, kFrameSamples.
  /// @param isSine   whether they are held for a sine.
  bool IsSpeech(const fixed_point::Word* samples, bool isSine) noexcept;
  /// The open-loop lags of a frame, for the next two. To be called for every frame.
  void AddLags(const std::array<int, kHalves>& lags) noexcept;
  /// A filter of the noise, found in frames that are no speech.
  void Learn(const Filter& noiseFilter) noexcept;

 private:
  bool HasPitch() const noexcept;
  void Adapt(bool isVoice) noexcept;
  fixed_point::Long Threshold() const noexcept;
  bool HangsOver(bool isSpeech) noexcept;

  int hangover_ = 3;                  // frames that are yet to be taken for speech
  int speechFrames_ = 0;              // up to kMostSpeechFrames
  int voice_ = 0;                     // above 0 nothing adapts; up to kMostVoice
  fixed_point::Long energy_ = 0x400;  // of the last frame
  fixed_point::Long level_ = 0x400;   // of the noise
  std::array<int, 2 * kHalves> lags_ = {1, 1, 60, 60};  // of two frames, the newer last
  Filter noiseFilter_ = {};
};

}  // namespace Quorvex::g723_1
