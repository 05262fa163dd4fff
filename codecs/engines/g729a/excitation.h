// The excitation's two parts: the adaptive codebook, which is its own past, and the fixed one.
#pragma once

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g729a/frame.h"

namespace Quorvex::g729a {

/// A pitch lag in thirds of a sample.
struct Lag {
  int samples = kLeastLag;
  int thirds = 0;  ///< added: -1, 0 or 1
};

/// Repeats the excitation of a lag before. @param excitation  begin of the subframe, with
/// kExcitationHistory samples before; receives the subframe. What it reads may be what it wrote.
void RepeatExcitation(Lag lag, fixed_point::Word* excitation) noexcept;

/// Four pulses. @param positions  13 bits. @param signs  4 bits. @return Q13.
Subframe PulsesOf(unsigned positions, unsigned signs) noexcept;

/// How much of a fixed code vector is repeated a lag later: the pitch gain before, held.
/// @return Q14, as the gain.
fixed_point::Word SharpeningOf(fixed_point::Word pitchGain) noexcept;
inline constexpr fixed_point::Word kLeastSharpening = 3277;  ///< 0.2; also at the beginning

/// Adds to the samples themselves of a lag before: for a code vector, or a response.
/// Does nothing for lags of a subframe and more. @param sharpening  Q14.
void Sharpen(int lag, fixed_point::Word sharpening, fixed_point::Word* samples) noexcept;

/// Sum of both parts. @param excitation  holds the adaptive part, receives the sum.
/// @param pitchGain  Q14. @param codeGain  Q1. @param code  Q13.
void AddCode(fixed_point::Word pitchGain, fixed_point::Word codeGain, const Subframe& code,
             fixed_point::Word* excitation) noexcept;

}  // namespace Quorvex::g729a
