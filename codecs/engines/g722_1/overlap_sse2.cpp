// The overlap with SSE2, which every x86-64 processor has: a multiply-add weighs two numbers, and
// packing to 16 bits saturates.
#include <emmintrin.h>

#include "codecs/engines/g722_1/overlap.h"
#include "codecs/engines/g722_1/sse2_vectors.h"
#include "codecs/engines/g722_1/synthesis_window.h"

namespace Quorvex::g722_1 {
namespace {

using fixed_point::Word;

// By place, what the mirrored first half and what was kept are multiplied by.
struct Weights {
  alignas(16) std::array<Word, kFrameSamples> front, back;
};

constexpr Weights kWeights = [] {
  Weights result{};
  for (std::size_t i = 0; i < kHalfFrame; ++i) {
    const Word rising = kSynthesisWindow[i];
    const Word falling = kSynthesisWindow[kFrameSamples - 1 - i];
    result.front[2 * i] = rising;
    result.front[2 * i + 1] = falling;
    result.back[2 * i] = falling;
    result.back[2 * i + 1] = static_cast<Word>(-rising);
  }
  return result;
}();

__m128i Weigh(__m128i low, __m128i high, const Word* weights) {
  const __m128i samples = PackRounded<13>(_mm_madd_epi16(low, LoadAligned(weights)),
                                          _mm_madd_epi16(high, LoadAligned(weights + kLanes)));
  return _mm_and_si128(samples, _mm_set1_epi16(~3));
}

}  // namespace

void WeighHalves(const Word* first, const Word* kept, short* samples) noexcept {
  for (std::size_t i = 0; i < kHalfFrame; i += kLanes) {
    const __m128i mirrored = Reverse(Load(first + kHalfFrame - kLanes - i));
    const __m128i old = Load(kept + i);
    const __m128i low = _mm_unpacklo_epi16(mirrored, old);
    const __m128i high = _mm_unpackhi_epi16(mirrored, old);
    Store(Weigh(low, high, &kWeights.front[2 * i]), samples + i);
    Store(Reverse(Weigh(low, high, &kWeights.back[2 * i])), samples + kFrameSamples - kLanes - i);
  }
}

}  // namespace Quorvex::g722_1
