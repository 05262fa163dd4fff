// How much an error is heard: less near the formants, and less at the harmonics of the voice.
#pragma once

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g723_1/formant_filter.h"
#include "codecs/engines/g723_1/frame.h"

namespace Quorvex::g723_1 {

/// The first part. @param filter  of the subframe's own samples, as it was found, not as it is
/// sent.
FormantFilter WeightingOf(const Filter& filter) noexcept;

/// The second part: 1 - gain x what is a lag before.
struct HarmonicFilter {
  int lag = kLeastLag;
  fixed_point::Word gain = 0;  ///< Q15
};
/// @param samples  a subframe of the weighted samples' normalised copy, with kExcitationHistory
///                 before. @param halfLag  open-loop.
HarmonicFilter HarmonicsOf(const fixed_point::Word* samples, int halfLag) noexcept;
/// @param weighted  a subframe with kExcitationHistory before.
Subframe ShapeHarmonics(const HarmonicFilter& filter, const fixed_point::Word* weighted) noexcept;

}  // namespace Quorvex::g723_1
