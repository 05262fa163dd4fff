// For processors without a vector variant.
#include "compression/posix/pcm_samples.h"

namespace Quorvex {

std::size_t ConvertFloatsWideVector(const unsigned char*, std::size_t, short*) noexcept {
  return 0;
}

std::size_t ConvertFloatsVector(const unsigned char*, std::size_t, short*) noexcept { return 0; }

std::size_t ConvertIntegers24Vector(const unsigned char*, std::size_t, short*) noexcept {
  return 0;
}

}  // namespace Quorvex
