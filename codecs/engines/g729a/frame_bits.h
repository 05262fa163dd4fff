// The bits of a frame.
#pragma once

#include <array>

#include "codecs/engines/g729a/frame.h"
#include "codecs/engines/g729a/lsf_predictor.h"

namespace Quorvex::g729a {

/// What is sent of a subframe.
struct SubframeIndices {
  unsigned lag = 0;         ///< 8 bits in the first, 5 in the second subframe
  unsigned positions = 0;   ///< 13 bits
  unsigned signs = 0;       ///< 4 bits
  unsigned firstGain = 0;   ///< 3 bits: indices, not rows
  unsigned secondGain = 0;  ///< 4 bits
};

struct FrameIndices {
  LSFIndices lsf;
  std::array<SubframeIndices, kSubframes> subframes;
  unsigned parity = 0;  ///< of the first subframe's lag
};

/// Odd parity of the upper six bits of the first subframe's lag.
unsigned ParityOf(unsigned lag) noexcept;

/// @param data  kFrameBytes.
FrameIndices Unpack(const unsigned char* data) noexcept;
void Pack(const FrameIndices& indices, unsigned char* data) noexcept;

}  // namespace Quorvex::g729a
