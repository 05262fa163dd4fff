// Where no vector variant is built.
#include "codecs/engines/block_filter.h"

namespace Quorvex::fixed_point {

void FilterBlocks(const Word* samples, const Word* taps, std::size_t tapCount, int shift,
                  std::size_t count, Word* filtered) noexcept {
  FilterBlocksPlain(samples, taps, tapCount, shift, count, filtered);
}

}  // namespace Quorvex::fixed_point
