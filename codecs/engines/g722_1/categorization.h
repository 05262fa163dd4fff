// Categorization: how coarsely each region is quantised, which decoder and encoder both derive from
// the powers and the bits that are there.
#pragma once

#include "codecs/engines/g722_1/frame.h"

namespace Quorvex::g722_1 {

/// @param bits     left for vectors
/// @param control  which of the 16 nearest sets the encoder has chosen, 0 to 15
Categories Categorize(const Powers& powers, int bits, int control) noexcept;

}  // namespace Quorvex::g722_1
