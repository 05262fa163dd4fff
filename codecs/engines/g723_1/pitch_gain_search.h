// The row of gains with which the samples of a lag come nearest to the target.
#pragma once

#include <array>
#include <cstddef>
#include <tuple>

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g723_1/pitch_gain_tables.h"

namespace Quorvex::g723_1 {

inline constexpr std::size_t kPitchProducts = std::tuple_size_v<PitchGainRow>;

/// What each factor of a row belongs to: five sums of products of the target and a tap's vector,
/// five energies of the vectors, and ten sums of products of two of them; all at the same norm.
using PitchProducts = std::array<fixed_point::Word, kPitchProducts>;

struct PitchChoice {
  int lag;
  unsigned row = 0;
  fixed_point::Long score = 0;  ///< what is gained; the more the nearer
};

/// Takes a row of this lag where one is better than the best so far.
/// @param hasShortLagGains  the table. @param rowCount  how many of its rows may be used.
void SearchPitchGains(int lag, bool hasShortLagGains, unsigned rowCount,
                      const PitchProducts& products, PitchChoice& best) noexcept;

}  // namespace Quorvex::g723_1
