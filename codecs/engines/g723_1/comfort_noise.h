// What is heard where nobody speaks: an excitation at random, of a level that is sent now and then.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g723_1/frame.h"

namespace Quorvex::g723_1 {

/// The level of the noise, from its index of 6 bits. At the excitation's half scale, x 2^5.
fixed_point::Word NoiseLevelOf(unsigned index) noexcept;
/// The index whose level comes next to an energy.
unsigned NoiseLevelIndex(fixed_point::Long energy) noexcept;

/// What stands for the pitch in noise.
struct NoisePitch {
  std::array<int, kSubframes> lags;
  std::array<unsigned, kSubframes> rows;  ///< of kPitchGains
};

/// The noise of a decoder and of an encoder is the same as long as no frame is lost.
class ComfortNoise {
 public:
  /// To be called after every frame of speech.
  void Restart() noexcept { seed_ = kSeed; }
  /// The level that is approached from frame to frame, or that the noise begins with.
  void SetLevel(fixed_point::Word level) noexcept { level_ = level; }

  /// Makes the excitation of a frame.
  /// @param isFirst     after speech.
  /// @param excitation  begin of the frame, with kExcitationHistory samples before.
  NoisePitch Make(bool isFirst, fixed_point::Word* excitation) noexcept;

 private:
  static constexpr std::uint16_t kSeed = 12345;

  using Half = std::array<fixed_point::Word, kHalfSamples>;

  unsigned Random(unsigned count) noexcept;
  Half DrawPulses(std::size_t half, unsigned bits) noexcept;

  fixed_point::Word level_ = 0;
  fixed_point::Word current_ = 0;  // of the last frame
  std::uint16_t seed_ = kSeed;
};

}  // namespace Quorvex::g723_1
