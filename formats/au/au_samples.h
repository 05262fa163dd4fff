// Big-endian samples of an AU file, converted to signed 16-bit and scaled.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Quorvex {

/// How samples are coded, by the number in an AU header. Only those that are decoded.
enum class AUEncoding : std::uint32_t {
  kMuLaw = 1,
  kLinear8 = 2,
  kLinear16 = 3,
  kLinear24 = 4,
  kLinear32 = 5,
  kFloat32 = 6,
  kFloat64 = 7,
  kALaw = 27,
};

/// Converts samples. Each becomes a value in the scale of 16 bits:
///
///     G.711            the expansion
///     8-bit linear     the high byte, the low one being 0
///     16-bit linear    itself
///     24- and 32-bit   the upper 16 bits; the others are dropped
///     floating point   x 32,768; NaN is 0, an infinity the nearest limit
///
/// and is then multiplied by 1 / channels; 0.5 is added if it is positive, else subtracted; it is
/// limited to [-32,768, 32,767] and truncated. All that in double precision and the default
/// rounding mode, as it stands here: the results are the same on every machine.
/// @param count    in samples, of all channels together.
/// @param samples  receives the results; it does not overlap the input.
void ConvertAUSamples(AUEncoding encoding, int channels, const unsigned char* input,
                      std::size_t count, short* samples) noexcept;

/// With vector instructions: ConvertAUSamples for kFloat32, where `channels` is a power of two.
/// Like the next, it returns how many of the first samples are done, the others being left: 0 where
/// there are no such instructions.
std::size_t ConvertAUFloatsVector(int channels, const unsigned char* input, std::size_t count,
                                  short* samples) noexcept;

/// With vector instructions: divides 16-bit values by 2^bits in place, rounding half away from
/// zero. Nothing is done for more than 3 bits.
std::size_t DivideAUSamplesVector(int bits, std::size_t count, short* samples) noexcept;

}  // namespace Quorvex
