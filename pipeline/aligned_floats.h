// Floats in memory that vectors of any width load fastest.
#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>

#include "support/cft_array.h"

namespace Quorvex {

class AlignedFloats {
 public:
  static constexpr std::size_t kAlignment = 64;  // bytes: a cache line

  /// The bytes that so many floats take.
  static constexpr std::size_t Bytes(std::size_t count) {
    return count * sizeof(float) + kAlignment;
  }

  /// Makes room for `count` floats, all 0, the one with the number `aligned` being aligned.
  /// @return the first one, owned by this object; null, and what was there is kept, when memory
  ///         runs out.
  float* Allocate(std::size_t count, std::size_t aligned = 0) noexcept {
    memory_.SetGrowth(1, 1, false, false);
    if (!memory_.Resize(Bytes(count) / sizeof(float))) return nullptr;
    std::fill_n(memory_.Data(), memory_.Count(), 0.0F);
    void* place = memory_.Data() + aligned;
    std::size_t space = Bytes(count - aligned);
    const std::size_t size = (count - aligned) * sizeof(float);
    return static_cast<float*>(std::align(kAlignment, size, place, space)) - aligned;
  }

 private:
  CFTarray<float> memory_;
};

}  // namespace Quorvex
