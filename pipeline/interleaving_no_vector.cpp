// For processors without a vector variant of taking channels apart.
#include "pipeline/interleaving.h"

namespace Quorvex {

std::size_t DeinterleaveVector(const short*, std::size_t, std::size_t, float* const*) noexcept {
  return 0;
}

std::size_t InterleaveVector(const short* const*, std::size_t, std::size_t, short*) noexcept {
  return 0;
}

}  // namespace Quorvex
