// The plain loops.
#include "compression/posix/pcm_samples.h"

#include <cmath>
#include <cstring>
#include <type_traits>

namespace Quorvex {
namespace {

constexpr int kFullScale = 32'768;
constexpr int kMiddle8 = 128;

template <class Float>
short Round(Float value) {
  const Float scaled = value * kFullScale;
  if (std::isnan(scaled)) return 0;
  if (scaled >= kFullScale - 1) return kFullScale - 1;
  if (scaled <= -kFullScale) return -kFullScale;
  return static_cast<short>(std::lrint(scaled));
}

}  // namespace

void ConvertUnsigned8(const unsigned char* input, std::size_t count, short* samples) noexcept {
  for (std::size_t i = 0; i < count; ++i) {
    samples[i] = static_cast<short>((input[i] - kMiddle8) * 256);
  }
}

template <std::size_t kWidth>
void ConvertIntegers(const unsigned char* input, std::size_t count, short* samples) noexcept {
  std::size_t i = kWidth == 3 ? ConvertIntegers24Vector(input, count, samples) : 0;
  for (; i < count; ++i) {
    std::memcpy(samples + i, input + (i + 1) * kWidth - sizeof(short), sizeof(short));
  }
}
template void ConvertIntegers<2>(const unsigned char*, std::size_t, short*) noexcept;
template void ConvertIntegers<3>(const unsigned char*, std::size_t, short*) noexcept;
template void ConvertIntegers<4>(const unsigned char*, std::size_t, short*) noexcept;
template void ConvertIntegers<8>(const unsigned char*, std::size_t, short*) noexcept;

template <class Float>
void ConvertFloats(const unsigned char* input, std::size_t count, short* samples) noexcept {
  std::size_t i = 0;
  if constexpr (std::is_same_v<Float, float>) {
    i = ConvertFloatsWideVector(input, count, samples);
    i += ConvertFloatsVector(input + i * sizeof(float), count - i, samples + i);
  }
  for (; i < count; ++i) {
    Float value{};
    std::memcpy(&value, input + i * sizeof value, sizeof value);
    samples[i] = Round(value);
  }
}
template void ConvertFloats<float>(const unsigned char*, std::size_t, short*) noexcept;
template void ConvertFloats<double>(const unsigned char*, std::size_t, short*) noexcept;

}  // namespace Quorvex
