// The two hot loops with vector instructions. This file alone is compiled for SSSE3, and asks at
// run time whether the processor has it.
#include <tmmintrin.h>

#include <bit>

#include "formats/au/au_samples.h"

namespace Quorvex {
namespace {

constexpr std::size_t kStep = 8;              // samples at a time
constexpr float kHighestDoubled = 65'534.0F;  // twice 32,767
constexpr float kLowestDoubled = -65'536.0F;  // twice -32,768

bool IsSupported() {
  static const bool isSupported = __builtin_cpu_supports("ssse3") != 0;
  return isSupported;
}

// Four big-endian floating-point samples.
__m128 LoadFloats(const unsigned char* input) {
  const __m128i bigEndian = _mm_set_epi8(12, 13, 14, 15, 8, 9, 10, 11, 4, 5, 6, 7, 0, 1, 2, 3);
  const __m128i words = _mm_loadu_si128(reinterpret_cast<const __m128i*>(input));
  return _mm_castsi128_ps(_mm_shuffle_epi8(words, bigEndian));
}

__m128 WithoutNaN(__m128 values) { return _mm_and_ps(values, _mm_cmpord_ps(values, values)); }

// Four samples, none of them NaN, to 32-bit lanes.
//
// 65,536 / channels is a power of two too, so single precision is exact: the product is twice the
// value that is to be rounded. Cut to an integer t it still tells halves apart, and
//
//     (t + (t < 0 ? 0 : 1)) >> 1
//
// rounds half away from zero.
__m128i Convert(__m128 values, __m128 gain) {
  const __m128 doubled =
      _mm_max_ps(_mm_min_ps(_mm_mul_ps(values, gain), _mm_set1_ps(kHighestDoubled)),
                 _mm_set1_ps(kLowestDoubled));
  const __m128i cut = _mm_cvttps_epi32(doubled);
  const __m128i isNotNegative = _mm_cmpgt_epi32(cut, _mm_set1_epi32(-1));
  return _mm_srai_epi32(_mm_sub_epi32(cut, isNotNegative), 1);
}

// value / 2^kBits, rounded half away from zero: rounded down, and one more if what was cut off is a
// half or more, for a negative value more than a half.
template <int kBits>
std::size_t Divide(std::size_t count, short* samples) {
  const __m128i mask = _mm_set1_epi16((1 << kBits) - 1);
  const __m128i half = _mm_set1_epi16(1 << (kBits - 1));
  std::size_t done = 0;
  for (; done + kStep <= count; done += kStep) {
    auto* const place = reinterpret_cast<__m128i*>(samples + done);
    const __m128i value = _mm_loadu_si128(place);
    const __m128i sign = _mm_srai_epi16(value, 15);
    const __m128i cutOff = _mm_add_epi16(_mm_add_epi16(_mm_and_si128(value, mask), half), sign);
    _mm_storeu_si128(place,
                     _mm_add_epi16(_mm_srai_epi16(value, kBits), _mm_srli_epi16(cutOff, kBits)));
  }
  return done;
}

}  // namespace

std::size_t ConvertAUFloatsVector(int channels, const unsigned char* input, std::size_t count,
                                  short* samples) noexcept {
  if (!std::has_single_bit(static_cast<unsigned>(channels)) || !IsSupported()) return 0;
  const __m128 gain = _mm_set1_ps(65'536.0F / static_cast<float>(channels));
  std::size_t done = 0;
  for (; done + kStep <= count; done += kStep) {
    __m128 first = LoadFloats(input + done * 4);
    __m128 second = LoadFloats(input + done * 4 + 16);
    if (_mm_movemask_ps(_mm_cmpunord_ps(first, second)) != 0) {
      first = WithoutNaN(first);
      second = WithoutNaN(second);
    }
    _mm_storeu_si128(reinterpret_cast<__m128i*>(samples + done),
                     _mm_packs_epi32(Convert(first, gain), Convert(second, gain)));
  }
  return done;
}

std::size_t DivideAUSamplesVector(int bits, std::size_t count, short* samples) noexcept {
  if (!IsSupported()) return 0;
  switch (bits) {
    case 1:
      return Divide<1>(count, samples);
    case 2:
      return Divide<2>(count, samples);
    case 3:
      return Divide<3>(count, samples);
    default:
      return 0;
  }
}

}  // namespace Quorvex
