// The pitch lag and its gain, found by trying what they make of the target.
#pragma once

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g729a/correlation.h"
#include "codecs/engines/g729a/excitation.h"
#include "codecs/engines/g729a/frame.h"

namespace Quorvex::g729a {

struct CodedLag {
  Lag lag;
  unsigned index = 0;  ///< 8 bits in the first, 5 in the second subframe
};

/// Finds the lag whose past excitation is most like the target.
/// @param backward    the target, by FilterBackward.
/// @param excitation  begin of the subframe, with kExcitationHistory samples before. It holds the
///                    residual, which stands for what a short lag would still have to make;
///                    receives the excitation of that lag.
CodedLag SearchFirstLag(int openLoopLag, const Subframe& backward,
                        fixed_point::Word* excitation) noexcept;
/// The same in the second subframe. @param firstLag  of the first.
CodedLag SearchSecondLag(int firstLag, const Subframe& backward,
                         fixed_point::Word* excitation) noexcept;

struct PitchGain {
  fixed_point::Word gain = 0;  ///< Q14, from 0 to 1.2
  Scaled energy;               ///< of the filtered vector
  Scaled likeness;             ///< its correlation with the target
};

/// @param filtered  the vector of the lag through 1 / A(z / 0.75).
PitchGain SearchPitchGain(const Subframe& target, const Subframe& filtered) noexcept;

}  // namespace Quorvex::g729a
