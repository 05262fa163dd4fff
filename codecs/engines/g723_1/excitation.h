// The excitation's two parts: the adaptive codebook, which is its own past, and the fixed one.
// An excitation is a pointer to where the frame or subframe begins: kExcitationHistory samples
// before it are its past.
#pragma once

#include <array>
#include <cstddef>

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g723_1/frame.h"
#include "codecs/engines/g723_1/frame_bits.h"
#include "codecs/engines/g723_1/pitch_gain_tables.h"

namespace Quorvex::g723_1 {

/// What the five taps read to make a subframe: from two samples before to two behind.
using LagSamples = std::array<fixed_point::Word, kSubframeSamples + kPitchTaps - 1>;

/// The past of a lag before, repeated where it comes to its end.
LagSamples SamplesOfLag(int lag, const fixed_point::Word* excitation) noexcept;
/// The sum of the five neighbours with the gains of a row.
Subframe AdaptiveVector(const LagSamples& samples, const PitchGainRow& gains) noexcept;
/// The row of gains that is meant by these indices.
const PitchGainRow& PitchGains(bool hasShortLagGains, unsigned row) noexcept;

/// The pulses of a subframe of a frame at 6.3 kbit/s, without their train. Placements that there
/// are not make no pulse.
/// @param subframe  0 to 3, which tells how many pulses there are.
Subframe MultipulseVector(std::size_t subframe, const SubframeIndices& indices) noexcept;
/// Adds the vector itself delayed by one lag, by two, and so on. @param lag  that of the half.
void AddPulseTrain(int lag, Subframe& vector) noexcept;
/// The encoder's part of the above. @param isPulse  of the 30 places of a grid.
unsigned PlacementOf(std::size_t subframe, const std::array<bool, 30>& isPulse) noexcept;

/// The pulses at 5.3 kbit/s, not sharpened.
Subframe AlgebraicVector(const SubframeIndices& indices) noexcept;
/// Adds to the samples themselves of about a lag before, as the row of pitch gains says.
/// @param lag  the subframe's.
void Sharpen(int lag, unsigned pitchRow, Subframe& vector) noexcept;

/// The fixed vector of a subframe, with its train or sharpened.
Subframe FixedVector(std::size_t subframe, const FrameIndices& indices) noexcept;

/// The adaptive vector of a subframe of a frame of speech.
Subframe AdaptiveVector(std::size_t subframe, const FrameIndices& indices,
                        const fixed_point::Word* excitation) noexcept;

/// Both parts together, of a subframe of a frame of speech.
/// @param adaptive    its adaptive vector.
/// @param excitation  receives the subframe.
void MakeExcitation(std::size_t subframe, const FrameIndices& indices, const Subframe& adaptive,
                    fixed_point::Word* excitation) noexcept;

}  // namespace Quorvex::g723_1
