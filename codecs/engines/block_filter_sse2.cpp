// Two taps at a time: samples and those one earlier, interleaved, times a pair of taps.
#include <emmintrin.h>

#include "codecs/engines/block_filter.h"

namespace Quorvex::fixed_point {
namespace {

__m128i Load(const Word* from) noexcept {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
}

struct Sums {
  __m128i low = _mm_setzero_si128();
  __m128i high = _mm_setzero_si128();

  void Add(__m128i now, __m128i before, Word tap, Word tapBefore) noexcept {
    const __m128i taps = _mm_unpacklo_epi16(_mm_set1_epi16(tap), _mm_set1_epi16(tapBefore));
    low = _mm_add_epi32(low, _mm_madd_epi16(_mm_unpacklo_epi16(now, before), taps));
    high = _mm_add_epi32(high, _mm_madd_epi16(_mm_unpackhi_epi16(now, before), taps));
  }
};

}  // namespace

void FilterBlocks(const Word* samples, const Word* taps, std::size_t tapCount, int shift,
                  std::size_t count, Word* filtered) noexcept {
  const __m128i half = _mm_set1_epi32(1 << (shift - 1));
  const __m128i bits = _mm_cvtsi32_si128(shift);
  for (std::size_t begin = 0; begin < count; begin += kFilterBlock) {
    const Word* const newest = samples + begin;
    Sums sums;
    std::size_t i = 0;
    for (; i + 1 < tapCount; i += 2) {
      sums.Add(Load(newest - i), Load(newest - i - 1), taps[i], taps[i + 1]);
    }
    if (i < tapCount) sums.Add(Load(newest - i), _mm_setzero_si128(), taps[i], 0);
    const __m128i low = _mm_sra_epi32(_mm_add_epi32(sums.low, half), bits);
    const __m128i high = _mm_sra_epi32(_mm_add_epi32(sums.high, half), bits);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(filtered + begin), _mm_packs_epi32(low, high));
  }
}

}  // namespace Quorvex::fixed_point
