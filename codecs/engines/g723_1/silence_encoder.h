// What is sent of the frames in which nobody speaks: a filter and a level of the noise, sent again
// when one of them is no longer right, and else nothing.
#pragma once

#include <array>
#include <cstddef>

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g723_1/comfort_noise.h"
#include "codecs/engines/g723_1/frame.h"
#include "codecs/engines/g723_1/frame_bits.h"
#include "codecs/engines/g723_1/linear_prediction.h"

namespace Quorvex::g723_1 {

class SilenceEncoder {
 public:
  /// To be called for every frame, also of speech, before Encode.
  void AddFrame(const std::array<Autocorrelation, kSubframes>& windows) noexcept;
  /// To be called after every frame of speech.
  void Restart() noexcept { wasSpeech_ = true; }

  /// Codes a frame that is no speech: its type, and what is sent of it.
  /// @param last  spectrum of the frame before.
  FrameIndices Encode(const LineSpectrum& last) noexcept;
  /// Of the three frames before one that Encode sent.
  const Filter& AverageFilter() const noexcept { return average_; }

  /// The spectrum that was sent last.
  const LineSpectrum& Spectrum() const noexcept { return spectrum_; }
  /// Makes the excitation of the frame that Encode coded.
  /// @param excitation  begin of the frame, with kExcitationHistory samples before.
  NoisePitch MakeExcitation(fixed_point::Word* excitation) noexcept;

 private:
  static constexpr std::size_t kFrames = 4;    // the current one and those of the average
  static constexpr std::size_t kEnergies = 3;  // at most, of which the level is the mean

  /// Autocorrelation of the filter that leaves the prediction's error: 1, -a1, -a2 and so on.
  struct FilterCorrelation {
    std::array<fixed_point::Word, kOrder + 1> values = {};  ///< Q(10 + shift); twice from lag 1 on
    int shift = 0;
  };
  /// What a prediction leaves of a frame: value / 2^shift.
  struct Energy {
    fixed_point::Word value = 0;
    int shift = 0;
  };

  static FilterCorrelation CorrelationOf(const Filter& filter) noexcept;
  bool Fits(const FilterCorrelation& filter) const noexcept;
  unsigned LevelIndex() const noexcept;
  unsigned EncodeFilter(const Filter& current, const LineSpectrum& last) noexcept;

  std::array<Autocorrelation, kFrames> frames_;  // the newest first
  std::array<Energy, kEnergies> energies_;       // of frames that are no speech, the newest first
  std::size_t energyCount_ = 0;
  Filter average_ = {};
  // What was sent last.
  FilterCorrelation filter_;
  LineSpectrum spectrum_ = {};
  unsigned levelIndex_ = 0;

  ComfortNoise noise_;
  bool wasSpeech_ = true;
};

}  // namespace Quorvex::g723_1
