// The four pulses of the fixed codebook.
#pragma once

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g729a/frame.h"

namespace Quorvex::g729a {

struct FixedCode {
  unsigned positions = 0;  ///< 13 bits
  unsigned signs = 0;      ///< 4 bits
  Subframe filtered = {};  ///< the pulses, 1 each, through the response, Q12
};

/// Finds pulses that come near to the target without trying all.
/// @param target    what the pitch left.
/// @param response  of 1 / A(z / 0.75), sharpened, Q12.
FixedCode SearchFixedCode(const Subframe& target, const Subframe& response) noexcept;

}  // namespace Quorvex::g729a
