// What stands for the excitation of a frame that was lost: the voice before goes on, or noise of
// its level, falling off.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g723_1/frame.h"
#include "codecs/engines/g723_1/frame_bits.h"

namespace Quorvex::g723_1 {

/// An excitation with its past, shifted to the left so that the largest takes 12 bits and the sign.
struct NormalizedExcitation {
  std::array<fixed_point::Word, kExcitationHistory + kFrameSamples> samples;
  int shift;

  /// @param history  the first of kExcitationHistory samples before the frame.
  explicit NormalizedExcitation(const fixed_point::Word* history) noexcept;
};

class Concealment {
 public:
  /// After every frame of speech that came, with its excitation.
  void Learn(const FrameIndices& indices, const NormalizedExcitation& excitation) noexcept;
  /// Makes the excitation of a frame of speech that did not.
  /// @param excitation  begin of the frame, with kExcitationHistory samples before.
  /// @return whether the next frame has this one as its past; else its past is silence.
  bool Repeat(fixed_point::Word* excitation) noexcept;

  /// Energy of the last half of the frame that came last, as NoiseLevelIndex takes it.
  fixed_point::Long Energy() const noexcept;

 private:
  int lost_ = 0;                  // frames, one after the other; counts to kMostLost
  int lag_ = 0;                   // of a voice; else 0
  fixed_point::Word gain_ = 0;    // of what is no voice
  fixed_point::Word energy_ = 0;  // of the last half of a frame
  int shift_ = 0;                 // of that half
  std::uint16_t seed_ = 0;
};

}  // namespace Quorvex::g723_1
