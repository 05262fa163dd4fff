// One loop a width. Input is little-endian, as are the machines that this runs on.
#include "support/sample_conversion.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

namespace Quorvex {
namespace {

static_assert(std::endian::native == std::endian::little);

constexpr std::size_t kPeakStride = 3;
constexpr int kTargetBits = 16;

void ConvertUnsigned8(const unsigned char* input, std::size_t count, short* samples) {
  for (std::size_t i = 0; i < count; ++i) samples[i] = static_cast<short>((input[i] - 128) * 256);
}

std::uint32_t Load32(const unsigned char* input, std::size_t index) {
  std::uint32_t value = 0;
  std::memcpy(&value, input + index * sizeof value, sizeof value);
  return value;
}

// Unsigned, so that the smallest integer has a magnitude too.
std::uint32_t Magnitude(std::uint32_t value) {
  return (value & 0x80000000U) != 0 ? 0U - value : value;
}

void ConvertSigned32(const unsigned char* input, std::size_t count, short* samples) {
  std::uint32_t peak = 0;
  for (std::size_t i = 0; i < count; i += kPeakStride) peak |= Magnitude(Load32(input, i));
  const int shift = std::max(static_cast<int>(std::bit_width(peak)) - kTargetBits, 0);
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint32_t value = Load32(input, i);
    const std::uint32_t scaled = Magnitude(value) >> shift;
    samples[i] = static_cast<short>((value & 0x80000000U) != 0 ? 0U - scaled : scaled);
  }
}

}  // namespace

QVERRORCODE_TAG ConvertToInt16(WaveLaw law, int width, const unsigned char* input,
                               std::size_t count, short* samples) noexcept {
  switch (width) {
    case 1:
      if (law == WaveLaw::kLinear) {
        ConvertUnsigned8(input, count, samples);
      } else {
        ExpandG711(law, input, count, samples);
      }
      return QVERR_OK;
    case 2:
      std::memcpy(samples, input, count * sizeof(short));
      return QVERR_OK;
    case 4:
      ConvertSigned32(input, count, samples);
      return QVERR_OK;
    default:
      std::fill_n(samples, count, short{0});
      return QVERR_BAD_FORMAT;
  }
}

}  // namespace Quorvex
