// A filter that makes formants weaker or stronger: two of the prediction's error filters, one of
// them the other way round, whose formants are wider than its own.
#pragma once

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g723_1/frame.h"
#include "codecs/engines/g723_1/recursive_filter.h"

namespace Quorvex::g723_1 {

/// (1 - zeros) / (1 - poles).
struct FormantFilter {
  Filter zeros = {};
  Filter poles = {};
};

/// @param zeroWeights, poleWeights  of the coefficients, Q15.
FormantFilter FormantFilterOf(const Filter& filter, const Filter& zeroWeights,
                              const Filter& poleWeights) noexcept;

/// Filters a subframe. @param samples  with kOrder before.
/// @param filtered  with kOrder before; receives the subframe.
/// @return what the filtered samples are before they are rounded, within their limits.
FilterSums FilterFormants(const FormantFilter& filter, const fixed_point::Word* samples,
                          fixed_point::Word* filtered) noexcept;

}  // namespace Quorvex::g723_1
