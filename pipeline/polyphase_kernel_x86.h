// The vector kernels of x86-64 processors, each in a file of its own.
#pragma once

#include <emmintrin.h>

#include "pipeline/polyphase_kernel.h"

namespace Quorvex {

extern const PolyphaseKernel kPolyphaseSSE2;
extern const PolyphaseKernel kPolyphaseAVX2;
extern const PolyphaseKernel kPolyphaseAVX512;

/// What ends every kernel's sums, compiled for each: `Vector` is a type of the kernel's own file.
template <class Vector>
short RoundSample(float value) {
  const __m128i whole = _mm_cvtps_epi32(_mm_set_ss(value));
  return static_cast<short>(_mm_cvtsi128_si32(_mm_packs_epi32(whole, whole)));
}

template <class Vector>
void StoreSamples(__m128 sums, float gain, short* output) {
  const __m128i whole = _mm_cvtps_epi32(_mm_mul_ps(sums, _mm_set1_ps(gain)));
  _mm_storel_epi64(reinterpret_cast<__m128i*>(output), _mm_packs_epi32(whole, whole));
}

}  // namespace Quorvex
