// The polyphase kernel with SSE2, which every x86-64 processor has.
#include <emmintrin.h>

#include "pipeline/polyphase_kernel_x86.h"
#include "pipeline/polyphase_loops.h"

namespace Quorvex {
namespace {

struct SSE2Vector {
  static constexpr std::size_t kLanes = 4;
  static constexpr std::size_t kMostWindows = 2;

  static SSE2Vector Load(const float* values) { return {_mm_loadu_ps(values)}; }
  static SSE2Vector MultiplyAdd(SSE2Vector a, SSE2Vector b, SSE2Vector sum) {
    return {_mm_add_ps(_mm_mul_ps(a.lanes, b.lanes), sum.lanes)};
  }
  static SSE2Vector Broadcast(float value) { return {_mm_set1_ps(value)}; }
  static float Sum(SSE2Vector v) {
    const __m128 pairs = _mm_add_ps(v.lanes, _mm_movehl_ps(v.lanes, v.lanes));
    return _mm_cvtss_f32(_mm_add_ss(pairs, _mm_shuffle_ps(pairs, pairs, 1)));
  }
  static short Round(float value) { return RoundSample<SSE2Vector>(value); }
  static void Store(const PolyphaseSums<SSE2Vector>& sums, float gain, short* output) {
    __m128 a = sums[0].lanes;
    __m128 b = sums[1].lanes;
    __m128 c = sums[2].lanes;
    __m128 d = sums[3].lanes;
    _MM_TRANSPOSE4_PS(a, b, c, d);
    const __m128 total = _mm_add_ps(_mm_add_ps(a, b), _mm_add_ps(c, d));
    StoreSamples<SSE2Vector>(total, gain, output);
  }

  __m128 lanes = {};
};

}  // namespace

const PolyphaseKernel kPolyphaseSSE2 = {"SSE2", []() noexcept { return true; },
                                        FilterWindows<SSE2Vector>, FilterInterpolated<SSE2Vector>};

}  // namespace Quorvex
