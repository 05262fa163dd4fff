// Vectors of eight 16-bit numbers, for the files that use SSE2.
#pragma once

#include <emmintrin.h>

#include <cstddef>

#include "codecs/engines/fixed_point.h"

namespace Quorvex::g722_1 {

inline constexpr std::size_t kLanes = 8;

inline __m128i Load(const fixed_point::Word* from) noexcept {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
}
inline __m128i LoadAligned(const fixed_point::Word* from) noexcept {
  return _mm_load_si128(reinterpret_cast<const __m128i*>(from));
}
inline void Store(__m128i vector, fixed_point::Word* to) noexcept {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(to), vector);
}

inline __m128i Reverse(__m128i vector) noexcept {
  constexpr int kBackwards = _MM_SHUFFLE(0, 1, 2, 3);
  const __m128i halves = _mm_shuffle_epi32(vector, _MM_SHUFFLE(1, 0, 3, 2));
  return _mm_shufflehi_epi16(_mm_shufflelo_epi16(halves, kBackwards), kBackwards);
}

/// 32-bit numbers without their last bits, rounded to the nearest, a half upwards, and saturated.
template <int kBits>
__m128i PackRounded(__m128i low, __m128i high) noexcept {
  const __m128i half = _mm_set1_epi32(1 << (kBits - 1));
  return _mm_packs_epi32(_mm_srai_epi32(_mm_add_epi32(low, half), kBits),
                         _mm_srai_epi32(_mm_add_epi32(high, half), kBits));
}

}  // namespace Quorvex::g722_1
