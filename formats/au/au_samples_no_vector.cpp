// For processors without a vector variant of the two hot loops.
#include "formats/au/au_samples.h"

namespace Quorvex {

std::size_t ConvertAUFloatsVector(int, const unsigned char*, std::size_t, short*) noexcept {
  return 0;
}

std::size_t DivideAUSamplesVector(int, std::size_t, short*) noexcept { return 0; }

}  // namespace Quorvex
