// Codes the excitation of a subframe: pitch, pulses and gains, in the order in which each depends
// on the one before.
#pragma once

#include <array>
#include <cstddef>

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g729a/excitation.h"
#include "codecs/engines/g729a/frame.h"
#include "codecs/engines/g729a/frame_bits.h"
#include "codecs/engines/g729a/gain_predictor.h"
#include "codecs/engines/g729a/taming.h"

namespace Quorvex::g729a {

class SubframeEncoder {
 public:
  /// @param number       0 or 1; the first before the second of each frame.
  /// @param openLoopLag  of the frame.
  /// @param weighted     A(z / 0.75) of the quantised filter.
  /// @param excitation   the subframe, holding the residual, with kExcitationHistory samples
  ///                     before; receives the excitation.
  SubframeIndices Encode(std::size_t number, int openLoopLag, const Filter& weighted,
                         fixed_point::Word* excitation) noexcept;

 private:
  fixed_point::Word sharpening_ = kLeastSharpening;
  Taming taming_;
  GainPredictor gainPredictor_;
  /// The last samples of the target that the excitation did not reach: memory of 1 / A(z / 0.75).
  std::array<fixed_point::Word, kOrder> error_ = {};
  int firstLag_ = kLeastLag;  ///< of the frame's first subframe
};

}  // namespace Quorvex::g729a
