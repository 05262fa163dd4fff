// Samples of PCM and floating point, little-endian, to signed 16-bit.
#pragma once

#include <cstddef>

namespace Quorvex {

/// (byte - 128) << 8.
void ConvertUnsigned8(const unsigned char* input, std::size_t count, short* samples) noexcept;

/// Integers of 2, 3, 4 or 8 bytes: their upper 16 bits, the others cut off.
template <std::size_t kWidth>
void ConvertIntegers(const unsigned char* input, std::size_t count, short* samples) noexcept;

/// 32 or 64 bits, full scale at 1: the nearest value, the even one of two, limited to 16 bits. A
/// NaN is 0.
template <class Float>
void ConvertFloats(const unsigned char* input, std::size_t count, short* samples) noexcept;

/// ConvertFloats<float> and ConvertIntegers<3> with vector instructions, the wide one with those
/// that fewer processors have. @return how many of the first samples were converted, the others
/// being left: 0 where the processor has no such instructions.
std::size_t ConvertFloatsWideVector(const unsigned char* input, std::size_t count,
                                    short* samples) noexcept;
std::size_t ConvertFloatsVector(const unsigned char* input, std::size_t count,
                                short* samples) noexcept;
std::size_t ConvertIntegers24Vector(const unsigned char* input, std::size_t count,
                                    short* samples) noexcept;

}  // namespace Quorvex
