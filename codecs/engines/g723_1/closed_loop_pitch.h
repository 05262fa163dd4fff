// The lag and the gains of the adaptive codebook.
#pragma once

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g723_1/frame.h"
#include "codecs/engines/g723_1/frame_bits.h"
#include "codecs/engines/g723_1/taming.h"

namespace Quorvex::g723_1 {

struct CodedPitch {
  int lag;  ///< the subframe's own
  unsigned row;
};

/// The place of a search in its frame.
struct PitchSearch {
  FrameType type;        ///< kAtHighRate or kAtLowRate
  std::size_t subframe;  ///< 0 to 3
  int halfLag;           ///< of its half so far
  bool isSine;           ///< the frame
};

/// Tries a few lags beside that of the half, with all rows of gains that are allowed.
/// @param excitation  begin of the subframe, with kExcitationHistory samples before.
CodedPitch SearchPitch(const PitchSearch& search, const Taming& taming, const Subframe& target,
                       const Subframe& response, const fixed_point::Word* excitation) noexcept;

}  // namespace Quorvex::g723_1
