// Products of 16-bit numbers, for the files of G.722 that use SSE2.
#pragma once

#include <emmintrin.h>

namespace Quorvex::g722 {

/// Q15 x Q15 in each lane, rounded down, for products that have 16 bits: not of -32768 by itself.
inline __m128i Product(__m128i a, __m128i b) noexcept {
  return _mm_or_si128(_mm_slli_epi16(_mm_mulhi_epi16(a, b), 1),
                      _mm_srli_epi16(_mm_mullo_epi16(a, b), 15));
}

}  // namespace Quorvex::g722
