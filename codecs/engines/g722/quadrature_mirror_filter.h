// The quadrature mirror filter: joins two bands of 8 kHz to a signal of 16 kHz, and splits it.
//
// Its 24 taps take the pairs of the last twelve sampling instants apart: the even taps weigh the
// second of each pair, the odd ones the first. What the two sums are depends on the direction:
//
//     joining    pair = lower + higher, lower - higher
//                even sum = the first sample, odd sum = the second
//     splitting  pair = two samples
//                lower = even + odd sum, higher = even - odd sum
#pragma once

#include <array>
#include <cstddef>

#include "codecs/engines/fixed_point.h"

namespace Quorvex::g722 {

using fixed_point::Long;
using fixed_point::Word;

class QuadratureMirrorFilter {
 public:
  static constexpr std::size_t kPairs = 80;  // in a frame

  /// Where the frame's pairs go.
  Word* First() noexcept { return first_.data() + kHistory; }
  Word* Second() noexcept { return second_.data() + kHistory; }

  /// Filters the frame's pairs. @param even, odd  receive the sums of each pair, Q14.
  void Run(Long* even, Long* odd) noexcept;

 private:
  static constexpr std::size_t kHistory = 11;

  std::array<Word, kHistory + kPairs> first_{};
  std::array<Word, kHistory + kPairs> second_{};
};

}  // namespace Quorvex::g722
