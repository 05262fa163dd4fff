// Filters over whole blocks of samples, for sums that are known not to saturate
// (sums_of_products.h). With vector instructions where every processor of the build's kind has
// them.
#pragma once

#include <cstddef>

#include "codecs/engines/fixed_point.h"

namespace Quorvex::fixed_point {

/// Samples of a block.
inline constexpr std::size_t kFilterBlock = 8;

/// filtered[n] = (taps[0] x samples[n] + taps[1] x samples[n - 1] + ...) / 2^shift, rounded to the
/// nearest, a half upwards, and saturated.
/// @param count  a multiple of kFilterBlock. @param shift  from 1 on.
/// @param filtered  no part of the samples that are read.
void FilterBlocks(const Word* samples, const Word* taps, std::size_t tapCount, int shift,
                  std::size_t count, Word* filtered) noexcept;

/// FilterBlocks in plain code.
void FilterBlocksPlain(const Word* samples, const Word* taps, std::size_t tapCount, int shift,
                       std::size_t count, Word* filtered) noexcept;

}  // namespace Quorvex::fixed_point
