// The two hot loops with vector instructions, eight samples at a time. This file alone is compiled
// for SSSE3, and asks at run time whether the processor has it.
#include <tmmintrin.h>

#include "compression/posix/pcm_samples.h"

namespace Quorvex {
namespace {

constexpr std::size_t kStep = 8;  // samples at a time

bool IsSupported() {
  static const bool isSupported = __builtin_cpu_supports("ssse3") != 0;
  return isSupported;
}

__m128 WithoutNaN(__m128 values) { return _mm_and_ps(values, _mm_cmpord_ps(values, values)); }

// To 32-bit lanes, rounded to the nearest, which is the processor's way unless somebody changed it.
// What is too large is limited first; what is too small becomes the smallest integer, which packing
// limits.
__m128i Convert(__m128 values) {
  const __m128 scaled = _mm_mul_ps(values, _mm_set1_ps(32'768.0F));
  return _mm_cvtps_epi32(_mm_min_ps(scaled, _mm_set1_ps(32'767.0F)));
}

}  // namespace

std::size_t ConvertFloatsVector(const unsigned char* input, std::size_t count,
                                short* samples) noexcept {
  if (!IsSupported()) return 0;
  std::size_t done = 0;
  for (; done + kStep <= count; done += kStep) {
    const auto* const values = reinterpret_cast<const float*>(input) + done;
    __m128 first = _mm_loadu_ps(values);
    __m128 second = _mm_loadu_ps(values + kStep / 2);
    if (_mm_movemask_ps(_mm_cmpunord_ps(first, second)) != 0) {
      first = WithoutNaN(first);
      second = WithoutNaN(second);
    }
    _mm_storeu_si128(reinterpret_cast<__m128i*>(samples + done),
                     _mm_packs_epi32(Convert(first), Convert(second)));
  }
  return done;
}

std::size_t ConvertIntegers24Vector(const unsigned char* input, std::size_t count,
                                    short* samples) noexcept {
  if (!IsSupported()) return 0;
  // Bytes 1 and 2 of each of four samples, into one half of the result; -1 clears.
  const __m128i toLower = _mm_set_epi8(-1, -1, -1, -1, -1, -1, -1, -1, 11, 10, 8, 7, 5, 4, 2, 1);
  const __m128i toUpper = _mm_set_epi8(15, 14, 12, 11, 9, 8, 6, 5, -1, -1, -1, -1, -1, -1, -1, -1);
  std::size_t done = 0;
  for (; done + kStep <= count; done += kStep) {
    const unsigned char* const bytes = input + done * 3;
    // The second load ends with the eighth sample, so it begins four bytes before the fifth.
    const __m128i first = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
    const __m128i second = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + 8));
    _mm_storeu_si128(
        reinterpret_cast<__m128i*>(samples + done),
        _mm_or_si128(_mm_shuffle_epi8(first, toLower), _mm_shuffle_epi8(second, toUpper)));
  }
  return done;
}

}  // namespace Quorvex
