// For processors without a vector variant of the G.711 expansion.
#include "support/g711.h"

namespace Quorvex {

std::size_t ExpandG711Vector(WaveLaw, const unsigned char*, std::size_t, short*) noexcept {
  return 0;
}

}  // namespace Quorvex
