// Samples of other widths and codings, converted to signed 16-bit.
#pragma once

#include <cstddef>

#include <MediaAccessor/result_code.h>

#include "support/g711.h"

namespace Quorvex {

/// Converts a block of little-endian samples.
///
///     width 1   A-law and mu-law expanded; linear: unsigned, (byte - 128) << 8
///     width 2   copied
///     width 4   signed; the whole block is shifted right, rounding towards zero, by n - 16 when
///               its peak has n > 16 significant bits, and the low 16 bits of each value are kept.
///               The peak is the OR of the magnitudes of every THIRD sample (0, 3, 6, ...). Both
///               are wanted. Sixteen bits of magnitude do not fit a signed 16-bit sample: one with
///               as many significant bits as the peak changes its sign, unless n is 32.
///     other     the output is zero-filled and the result is QVERR_BAD_FORMAT
///
/// @param samples  receives `count` samples; it does not overlap the input.
QVERRORCODE_TAG ConvertToInt16(WaveLaw law, int width, const unsigned char* input,
                               std::size_t count, short* samples) noexcept;

}  // namespace Quorvex
