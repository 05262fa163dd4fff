// Two steps for everything that has a 16-bit value: the values, then the scaling in place. Floating
// point takes one, in double precision.
#include "formats/au/au_samples.h"

#include <bit>
#include <cmath>

#include "support/g711.h"

namespace Quorvex {
namespace {

constexpr double kLowest = -32'768.0;
constexpr double kHighest = 32'767.0;
constexpr double kFullScale = 32'768.0;

// Multiplication, rounding and limits as they are wanted. No fused multiply-add: the compiler is
// told so, see cmake/compiler.cmake.
short Scale(double value, double gain) {
  double scaled = value * gain;
  if (std::isnan(scaled)) return 0;
  scaled = scaled > 0 ? scaled + 0.5 : scaled - 0.5;
  scaled = scaled < kHighest ? scaled : kHighest;
  scaled = scaled > kLowest ? scaled : kLowest;
  return static_cast<short>(scaled);
}

void ScaleByDivision(std::size_t count, int channels, short* samples) {
  const double gain = 1.0 / channels;
  for (std::size_t i = 0; i < count; ++i) samples[i] = Scale(samples[i], gain);
}

// The same for 2^bits channels: dividing by a power of two is exact, so integers round alike.
void ScaleByShift(std::size_t count, int bits, short* samples) {
  const int mask = (1 << bits) - 1;
  const int half = 1 << (bits - 1);
  for (std::size_t i = DivideAUSamplesVector(bits, count, samples); i < count; ++i) {
    const int value = samples[i];
    // Rounds up from one half, and for a negative value from just above one half.
    const int carry = ((value & mask) + half + (value >> 15)) >> bits;
    samples[i] = static_cast<short>((value >> bits) + carry);
  }
}

// By 1 / channels, which attenuates every file of more than one channel. That is wanted, although
// the mixer averages the channels besides.
void ScaleByChannels(std::size_t count, int channels, short* samples) {
  const auto divisor = static_cast<unsigned>(channels);
  if (channels == 1) return;
  if (std::has_single_bit(divisor)) {
    ScaleByShift(count, std::countr_zero(divisor), samples);
  } else {
    ScaleByDivision(count, channels, samples);
  }
}

// The two most significant bytes of each sample.
template <std::size_t kWidth>
void TakeUpper16(const unsigned char* input, std::size_t count, short* samples) {
  for (std::size_t i = 0; i < count; ++i) {
    const unsigned char* const bytes = input + i * kWidth;
    samples[i] = static_cast<short>(bytes[0] << 8 | bytes[1]);
  }
}

void TakeUpper8(const unsigned char* input, std::size_t count, short* samples) {
  for (std::size_t i = 0; i < count; ++i) samples[i] = static_cast<short>(input[i] << 8);
}

template <class Float, class Bits>
void ConvertFloats(const unsigned char* input, std::size_t count, int channels, short* samples) {
  const double gain = 1.0 / channels;
  for (std::size_t i = 0; i < count; ++i) {
    Bits bits = 0;
    for (std::size_t b = 0; b < sizeof bits; ++b) bits = bits << 8 | input[i * sizeof bits + b];
    samples[i] = Scale(std::bit_cast<Float>(bits) * kFullScale, gain);
  }
}

}  // namespace

void ConvertAUSamples(AUEncoding encoding, int channels, const unsigned char* input,
                      std::size_t count, short* samples) noexcept {
  switch (encoding) {
    case AUEncoding::kMuLaw:
      ExpandG711(WaveLaw::kMuLaw, input, count, samples);
      break;
    case AUEncoding::kALaw:
      ExpandG711(WaveLaw::kALaw, input, count, samples);
      break;
    case AUEncoding::kLinear8:
      TakeUpper8(input, count, samples);
      break;
    case AUEncoding::kLinear16:
      TakeUpper16<2>(input, count, samples);
      break;
    case AUEncoding::kLinear24:
      TakeUpper16<3>(input, count, samples);
      break;
    case AUEncoding::kLinear32:
      TakeUpper16<4>(input, count, samples);
      break;
    case AUEncoding::kFloat32: {
      const std::size_t done = ConvertAUFloatsVector(channels, input, count, samples);
      ConvertFloats<float, std::uint32_t>(input + done * 4, count - done, channels, samples + done);
      return;
    }
    case AUEncoding::kFloat64:
      ConvertFloats<double, std::uint64_t>(input, count, channels, samples);
      return;
  }
  ScaleByChannels(count, channels, samples);
}

}  // namespace Quorvex
