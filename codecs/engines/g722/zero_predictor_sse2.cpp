// The zeros with SSE2, which every x86-64 processor has: a lane each.
//
// The sums are added up without saturation. That is the same as long as the magnitudes of the
// products together stay within 16 bits; where one sum of a frame does not, the frame is done again
// in plain code.
#include <emmintrin.h>

#include "codecs/engines/g722/sse2_product.h"
#include "codecs/engines/g722/zero_predictor.h"

namespace Quorvex::g722 {
namespace {

using fixed_point::Word;

__m128i Load(const std::array<Word, 8>& words) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(words.data()));
}
void Store(__m128i vector, std::array<Word, 8>& words) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(words.data()), vector);
}

// Leaking 1/256, rounded down: z + floor(-256 z / 65536).
__m128i Adapt(__m128i zeros, __m128i doubled, __m128i difference) {
  const __m128i gains =
      _mm_set_epi16(0, 0, kZeroGain, kZeroGain, kZeroGain, kZeroGain, kZeroGain, kZeroGain);
  const __m128i gain = _mm_andnot_si128(_mm_cmpeq_epi16(difference, _mm_setzero_si128()), gains);
  const __m128i sign = _mm_srai_epi16(_mm_xor_si128(difference, doubled), 15);
  const __m128i leaked = _mm_add_epi16(zeros, _mm_mulhi_epi16(zeros, _mm_set1_epi16(-256)));
  return _mm_add_epi16(leaked, _mm_sub_epi16(_mm_xor_si128(gain, sign), sign));
}

// The sum of the lanes, and in lane 2 that of their magnitudes: a multiply-add with the signs.
__m128i Sums(__m128i products) {
  const __m128i one = _mm_set1_epi16(1);
  const __m128i values = _mm_madd_epi16(products, one);
  const __m128i sizes = _mm_madd_epi16(products, _mm_or_si128(_mm_srai_epi16(products, 15), one));
  const __m128i both =
      _mm_add_epi32(_mm_unpacklo_epi64(values, sizes), _mm_unpackhi_epi64(values, sizes));
  return _mm_add_epi32(both, _mm_shuffle_epi32(both, _MM_SHUFFLE(2, 3, 0, 1)));
}

}  // namespace

void AdaptZeros(ZeroPredictor& predictor, const Word* differences, std::size_t count,
                Word* parts) noexcept {
  __m128i zeros = Load(predictor.zeros);
  __m128i doubled = Load(predictor.doubled);
  __m128i allBits = _mm_setzero_si128();
  for (std::size_t i = 0; i < 2 * count; i += 2) {
    const __m128i difference = _mm_set1_epi16(differences[i]);
    zeros = Adapt(zeros, doubled, difference);
    const __m128i newest = _mm_srli_si128(_mm_add_epi16(difference, difference), 14);
    doubled = _mm_or_si128(_mm_slli_si128(doubled, 2), newest);
    // A doubled difference is within 20,456, so the products have 16 bits.
    const __m128i sums = Sums(Product(doubled, zeros));
    allBits = _mm_or_si128(allBits, sums);
    parts[i] = static_cast<Word>(_mm_cvtsi128_si32(sums));
  }
  if (_mm_cvtsi128_si32(_mm_unpackhi_epi64(allBits, allBits)) > fixed_point::kMostWord) {
    AdaptZerosPlain(predictor, differences, count, parts);
    return;
  }
  Store(zeros, predictor.zeros);
  Store(doubled, predictor.doubled);
}

}  // namespace Quorvex::g722
