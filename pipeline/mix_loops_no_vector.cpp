// For processors without a vector variant of the mixer's loops.
#include "pipeline/mix_loops.h"

namespace Quorvex {

std::size_t MixCombinedVector(MixRule, const short*, std::size_t, int, std::span<const int>,
                              short*) noexcept {
  return 0;
}

}  // namespace Quorvex
