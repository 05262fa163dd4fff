// Windowing, and the overlap of each frame with the one before.
#pragma once

#include <array>
#include <cstddef>

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g722_1/frame.h"

namespace Quorvex::g722_1 {

inline constexpr std::size_t kHalfFrame = kFrameSamples / 2;

class Overlap {
 public:
  /// @param transformed  of the inverse transform
  /// @param samples      receives as many
  void Add(const Samples& transformed, short* samples) noexcept;

 private:
  std::array<fixed_point::Word, kHalfFrame> kept_{};
};

/// Weighs the first half of a transformed frame and what was kept of the one before.
/// @param first, kept  kHalfFrame each. @param samples  receives kFrameSamples.
void WeighHalves(const fixed_point::Word* first, const fixed_point::Word* kept,
                 short* samples) noexcept;

/// WeighHalves in plain code.
void WeighHalvesPlain(const fixed_point::Word* first, const fixed_point::Word* kept,
                      short* samples) noexcept;

}  // namespace Quorvex::g722_1
