// What an excitation sounds like behind the synthesis and both weightings, where the encoder
// compares.
#pragma once

#include <array>

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g723_1/formant_filter.h"
#include "codecs/engines/g723_1/frame.h"
#include "codecs/engines/g723_1/perceptual_weighting.h"

namespace Quorvex::g723_1 {

struct SubframeFilters {
  Filter synthesis = {};  ///< as it is sent
  FormantFilter weighting;
  HarmonicFilter harmonics;
};

/// What becomes of one pulse.
Subframe ResponseOf(const SubframeFilters& filters) noexcept;

class WeightedSynthesis {
 public:
  /// Takes away what is still to come of the excitation before.
  void RemoveRinging(const SubframeFilters& filters, Subframe& target) const noexcept;
  /// After a subframe. @param excitation  the subframe, as the decoder will have it.
  void Update(const SubframeFilters& filters, const fixed_point::Word* excitation) noexcept;

 private:
  std::array<fixed_point::Word, kOrder> synthesized_ = {};           // the newest last
  std::array<fixed_point::Word, kExcitationHistory> weighted_ = {};  // the newest last
};

}  // namespace Quorvex::g723_1
