// Floating point as in pcm_samples_ssse3.cpp, sixteen samples at a time. This file alone is
// compiled for AVX2, and asks at run time whether the processor has it.
#include <immintrin.h>

#include "compression/posix/pcm_samples.h"

namespace Quorvex {
namespace {

constexpr std::size_t kStep = 16;  // samples at a time

bool IsSupported() {
  static const bool isSupported = __builtin_cpu_supports("avx2") != 0;
  return isSupported;
}

__m256 WithoutNaN(__m256 values) {
  return _mm256_and_ps(values, _mm256_cmp_ps(values, values, _CMP_ORD_Q));
}

__m256i Convert(__m256 values) {
  const __m256 scaled = _mm256_mul_ps(values, _mm256_set1_ps(32'768.0F));
  return _mm256_cvtps_epi32(_mm256_min_ps(scaled, _mm256_set1_ps(32'767.0F)));
}

}  // namespace

std::size_t ConvertFloatsWideVector(const unsigned char* input, std::size_t count,
                                    short* samples) noexcept {
  if (!IsSupported()) return 0;
  std::size_t done = 0;
  for (; done + kStep <= count; done += kStep) {
    const auto* const values = reinterpret_cast<const float*>(input) + done;
    __m256 first = _mm256_loadu_ps(values);
    __m256 second = _mm256_loadu_ps(values + kStep / 2);
    if (_mm256_movemask_ps(_mm256_cmp_ps(first, second, _CMP_UNORD_Q)) != 0) {
      first = WithoutNaN(first);
      second = WithoutNaN(second);
    }
    // Packing takes the lower halves of both first, then the upper ones: put them in order.
    constexpr int kInOrder = 0b11'01'10'00;
    const __m256i packed = _mm256_packs_epi32(Convert(first), Convert(second));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(samples + done),
                        _mm256_permute4x64_epi64(packed, kInOrder));
  }
  return done;
}

}  // namespace Quorvex
