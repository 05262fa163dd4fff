// Quantises both gains of a subframe together.
#pragma once

#include "codecs/engines/g729a/closed_loop_pitch.h"
#include "codecs/engines/g729a/frame.h"
#include "codecs/engines/g729a/gain_predictor.h"
#include "codecs/engines/g729a/gain_tables.h"

namespace Quorvex::g729a {

/// What the gains are searched for: to bring the filtered vectors near the target.
struct GainTask {
  const Subframe& target;
  const Subframe& pitchVector;  ///< Q0
  const Subframe& codeVector;   ///< Q12
  PitchGain pitch;              ///< as the first vector alone would have it
  PredictedGain predicted;      ///< of the second
  bool isTamed = false;         ///< keeps the pitch gain below 1
};

struct CodedGains {
  unsigned firstIndex = 0;   ///< 3 bits
  unsigned secondIndex = 0;  ///< 4 bits
  GainSum sum;               ///< what they stand for
};

CodedGains SearchGains(const GainTask& task) noexcept;

}  // namespace Quorvex::g729a
