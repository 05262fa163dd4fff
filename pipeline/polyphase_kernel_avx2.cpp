// The polyphase kernel with AVX2 and fused multiply-add. This file alone is compiled for them;
// whether the processor has both is asked at run time.
#include <immintrin.h>

#include "pipeline/polyphase_kernel_x86.h"
#include "pipeline/polyphase_loops.h"

namespace Quorvex {
namespace {

struct AVX2Vector {
  static constexpr std::size_t kLanes = 8;
  static constexpr std::size_t kMostWindows = 3;

  static AVX2Vector Load(const float* values) { return {_mm256_loadu_ps(values)}; }
  static AVX2Vector MultiplyAdd(AVX2Vector a, AVX2Vector b, AVX2Vector sum) {
    return {_mm256_fmadd_ps(a.lanes, b.lanes, sum.lanes)};
  }
  static AVX2Vector Broadcast(float value) { return {_mm256_set1_ps(value)}; }
  static float Sum(AVX2Vector v) {
    const __m128 four =
        _mm_add_ps(_mm256_castps256_ps128(v.lanes), _mm256_extractf128_ps(v.lanes, 1));
    const __m128 pairs = _mm_add_ps(four, _mm_movehl_ps(four, four));
    return _mm_cvtss_f32(_mm_add_ss(pairs, _mm_movehdup_ps(pairs)));
  }
  static short Round(float value) { return RoundSample<AVX2Vector>(value); }
  static void Store(const PolyphaseSums<AVX2Vector>& sums, float gain, short* output) {
    const __m256 ab = _mm256_hadd_ps(sums[0].lanes, sums[1].lanes);
    const __m256 cd = _mm256_hadd_ps(sums[2].lanes, sums[3].lanes);
    const __m256 halves = _mm256_hadd_ps(ab, cd);
    const __m128 total =
        _mm_add_ps(_mm256_castps256_ps128(halves), _mm256_extractf128_ps(halves, 1));
    StoreSamples<AVX2Vector>(total, gain, output);
  }

  __m256 lanes = {};
};

bool IsSupported() noexcept {
  return __builtin_cpu_supports("avx2") != 0 && __builtin_cpu_supports("fma") != 0;
}

}  // namespace

const PolyphaseKernel kPolyphaseAVX2 = {"AVX2", IsSupported, FilterWindows<AVX2Vector>,
                                        FilterInterpolated<AVX2Vector>};

}  // namespace Quorvex
