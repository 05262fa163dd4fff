// What the filters with poles have in common: plain sums, as long as nothing can saturate. Whoever
// uses it goes on with saturating ones from where it stops.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g723_1/frame.h"

namespace Quorvex::g723_1 {

/// What becomes samples, before it is rounded: undoubled, Q13 as the coefficients.
using FilterSums = std::array<fixed_point::Long, kSubframeSamples>;
inline constexpr int kFilterSumShift = 13;

constexpr fixed_point::Word SampleOf(fixed_point::Long sum) noexcept {
  return fixed_point::Saturate((sum + (1 << (kFilterSumShift - 1))) >> kFilterSumShift);
}

/// The largest sample by which a filter puts no more than the rest into a sum; 0 or less where
/// there is none.
fixed_point::Long MostSample(std::int64_t rest, const Filter& filter) noexcept;

/// Takes away from the sums what the filter predicts. @param samples  with kOrder before.
void SubtractPrediction(const Filter& filter, const fixed_point::Word* samples,
                        FilterSums& sums) noexcept;

/// Adds to each sum what the filter predicts of the samples before, and makes the next sample of
/// it, up to a sample that is above `most`.
/// @param most     of MostSample, for the rest that the sums leave.
/// @param sums     receives those that samples are made of.
/// @param samples  with kOrder before.
/// @return how many samples are made; 0 also where one of those before is above `most`.
std::size_t AddPrediction(const Filter& filter, fixed_point::Long most, FilterSums& sums,
                          fixed_point::Word* samples) noexcept;

}  // namespace Quorvex::g723_1
