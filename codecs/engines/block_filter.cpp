#include "codecs/engines/block_filter.h"

namespace Quorvex::fixed_point {

void FilterBlocksPlain(const Word* samples, const Word* taps, std::size_t tapCount, int shift,
                       std::size_t count, Word* filtered) noexcept {
  for (std::size_t begin = 0; begin < count; begin += kFilterBlock) {
    Long sums[kFilterBlock] = {};
    for (std::size_t i = 0; i < tapCount; ++i) {
      for (std::size_t n = 0; n < kFilterBlock; ++n)
        sums[n] += taps[i] * *(samples + begin + n - i);
    }
    for (std::size_t n = 0; n < kFilterBlock; ++n) {
      filtered[begin + n] = Saturate((sums[n] + (1 << (shift - 1))) >> shift);
    }
  }
}

}  // namespace Quorvex::fixed_point
