// The poles with SSE2, which every x86-64 processor has: each step waits for the one before, so
// that a lane each for the two bands is what there is to gain, and sums that saturate by
// themselves.
#include <emmintrin.h>

#include <cstring>

#include "codecs/engines/g722/pole_predictor.h"
#include "codecs/engines/g722/sse2_product.h"

namespace Quorvex::g722 {
namespace {

// The two lowest lanes, as they are in memory.
__m128i Load(const Word* both) {
  int bits = 0;
  std::memcpy(&bits, both, sizeof bits);
  return _mm_cvtsi32_si128(bits);
}
void Store(__m128i vector, Word* both) {
  const int bits = _mm_cvtsi128_si32(vector);
  std::memcpy(both, &bits, sizeof bits);
}

__m128i SignsDiffer(__m128i a, __m128i b) { return _mm_srai_epi16(_mm_xor_si128(a, b), 15); }
__m128i WithSign(__m128i number, __m128i sign) {
  return _mm_subs_epi16(_mm_xor_si128(number, sign), sign);
}
// a - a / 2^kShift, rounded down: a + floor(-2^(16 - kShift) a / 65536).
template <int kShift>
__m128i Leak(__m128i a) {
  return _mm_add_epi16(a, _mm_mulhi_epi16(a, _mm_set1_epi16(-(1 << (16 - kShift)))));
}
__m128i Clamp(__m128i number, __m128i most) {
  const __m128i least = _mm_sub_epi16(_mm_setzero_si128(), most);
  return _mm_max_epi16(_mm_min_epi16(number, most), least);
}

// PolePredictor of both bands.
struct Both {
  __m128i first, second, partial, olderPartial, output, zeroPart, prediction;

  void Update(__m128i difference, __m128i newZeroPart) noexcept {
    const __m128i newPartial = _mm_adds_epi16(difference, zeroPart);
    const __m128i sample = _mm_adds_epi16(difference, prediction);
    const __m128i newOutput = _mm_adds_epi16(sample, sample);
    Adapt(newPartial);
    const __m128i polePart = _mm_adds_epi16(Product(first, newOutput), Product(second, output));
    prediction = _mm_adds_epi16(polePart, newZeroPart);
    zeroPart = newZeroPart;
    olderPartial = partial;
    partial = newPartial;
    output = newOutput;
  }

 private:
  void Adapt(__m128i newPartial) noexcept {
    const __m128i sign = SignsDiffer(newPartial, partial);
    const __m128i same = _mm_xor_si128(sign, _mm_set1_epi16(-1));
    const __m128i doubled = _mm_adds_epi16(first, first);
    const __m128i opposite = WithSign(_mm_adds_epi16(doubled, doubled), same);
    const __m128i gain =
        WithSign(_mm_set1_epi16(kSecondPoleGain), SignsDiffer(newPartial, olderPartial));
    const __m128i newSecond =
        _mm_add_epi16(_mm_srai_epi16(opposite, 7), _mm_add_epi16(gain, Leak<7>(second)));
    second = Clamp(newSecond, _mm_set1_epi16(kMostSecondPole));
    const __m128i newFirst =
        _mm_add_epi16(WithSign(_mm_set1_epi16(kFirstPoleGain), sign), Leak<8>(first));
    first = Clamp(newFirst, _mm_sub_epi16(_mm_set1_epi16(kMostPoles), second));
  }
};

}  // namespace

void Predict(PolePredictor& lower, PolePredictor& higher, const Word* differences,
             const Word* zeroParts, std::size_t count, Word* predictions) noexcept {
  const auto load = [&](Word PolePredictor::*number) {
    const Word both[] = {lower.*number, higher.*number};
    return Load(both);
  };
  const auto store = [&](__m128i vector, Word PolePredictor::*number) {
    Word both[2];
    Store(vector, both);
    lower.*number = both[0];
    higher.*number = both[1];
  };
  Both both{load(&PolePredictor::first),     load(&PolePredictor::second),
            load(&PolePredictor::partial),   load(&PolePredictor::olderPartial),
            load(&PolePredictor::output),    load(&PolePredictor::zeroPart),
            load(&PolePredictor::prediction)};
  for (std::size_t i = 0; i < 2 * count; i += 2) {
    Store(both.prediction, predictions + i);
    both.Update(Load(differences + i), Load(zeroParts + i));
  }
  store(both.first, &PolePredictor::first);
  store(both.second, &PolePredictor::second);
  store(both.partial, &PolePredictor::partial);
  store(both.olderPartial, &PolePredictor::olderPartial);
  store(both.output, &PolePredictor::output);
  store(both.zeroPart, &PolePredictor::zeroPart);
  store(both.prediction, &PolePredictor::prediction);
}

}  // namespace Quorvex::g722
