// For processors without a vector variant of taking channels apart.
#include "pipeline/channel_split.h"

namespace Quorvex {

std::size_t SplitChannelsVector(const short*, std::size_t, std::size_t, float* const*) noexcept {
  return 0;
}

std::size_t JoinChannelsVector(const short* const*, std::size_t, std::size_t, short*) noexcept {
  return 0;
}

}  // namespace Quorvex
