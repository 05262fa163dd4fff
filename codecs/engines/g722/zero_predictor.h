// The zeros of a band's predictor: six weights over the quantised differences, which they follow.
// No sample of the band goes into them, so that a decoder can have them for a whole frame at once.
#pragma once

#include <array>
#include <cstddef>

#include "codecs/engines/fixed_point.h"

namespace Quorvex::g722 {

// Of the adaptive prediction of ITU-T G.722.
inline constexpr std::size_t kZeros = 6;
inline constexpr int kZeroGain = 128;

/// Places past the last zero make up a vector. Their zeros stay 0, and what they multiply is of no
/// importance.
struct ZeroPredictor {
  std::array<fixed_point::Word, 8> zeros{};    // Q14
  std::array<fixed_point::Word, 8> doubled{};  // the differences, twice each, the newest first
};

/// Goes on by so many differences, each within 10,228. With vector instructions where every
/// processor of the build's kind has them.
/// @param differences, parts  at every second place: the other band's stand between
/// @param parts               receives what the zeros give to the prediction after each
void AdaptZeros(ZeroPredictor& predictor, const fixed_point::Word* differences, std::size_t count,
                fixed_point::Word* parts) noexcept;

/// AdaptZeros in plain code.
void AdaptZerosPlain(ZeroPredictor& predictor, const fixed_point::Word* differences,
                     std::size_t count, fixed_point::Word* parts) noexcept;

}  // namespace Quorvex::g722
