// The spectral envelope: the power of each region.
#pragma once

#include <array>

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g722_1/bit_reader.h"
#include "codecs/engines/g722_1/frame.h"

namespace Quorvex::g722_1 {

struct Envelope {
  Powers powers;
  std::array<fixed_point::Word, kRegions> deviations;  ///< standard ones, at most 2048 if valid
  int magnitudeShift;                                  ///< by which the deviations are too large
  bool isValid;                                        ///< no power that an encoder cannot send
};

Envelope ReadEnvelope(BitReader& reader) noexcept;

}  // namespace Quorvex::g722_1
