// Codes the excitation of a subframe: first the pitch, then the pulses for what it leaves.
#pragma once

#include <cstddef>

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g723_1/algebraic_search.h"
#include "codecs/engines/g723_1/frame.h"
#include "codecs/engines/g723_1/frame_bits.h"
#include "codecs/engines/g723_1/taming.h"
#include "codecs/engines/g723_1/weighted_synthesis.h"

namespace Quorvex::g723_1 {

class SubframeEncoder {
 public:
  struct Input {
    SubframeFilters filters;
    Subframe target;      ///< the samples behind both weightings
    bool isSine = false;  ///< of the frame
  };

  /// The subframes of a frame come in turn.
  /// @param budget      of the frame. @param excitation  receives the subframe, with
  ///                    kExcitationHistory samples before.
  /// @param indices     has its type, and the lag of the half so far; receives what is sent of the
  ///                    subframe.
  void Encode(std::size_t subframe, const Input& input, SearchBudget& budget, FrameIndices& indices,
              fixed_point::Word* excitation) noexcept;

  /// The memories after a subframe, which need not be of speech.
  /// @param lag  the subframe's own. @param excitation  as the decoder will have it.
  void Follow(const SubframeFilters& filters, int lag, bool hasShortLagGains, unsigned pitchRow,
              const fixed_point::Word* excitation) noexcept;

 private:
  Taming taming_;
  WeightedSynthesis synthesis_;
};

}  // namespace Quorvex::g723_1
