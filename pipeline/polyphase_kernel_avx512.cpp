// The polyphase kernel with AVX-512. This file alone is compiled for it; whether the processor has
// it is asked at run time.
//
// A vector holds a step of two rows, and a step of input is loaded into both halves, so that a
// window's sums are two vectors.
#include <immintrin.h>

#include "pipeline/polyphase_kernel_x86.h"
#include "pipeline/polyphase_loops.h"

namespace Quorvex {
namespace {

constexpr std::size_t kMostWindows = 8;
constexpr std::size_t kStoredWindows = 4;  // at a time

// The sums of a window, each still in eight lanes: rows 0 and 1, and rows 2 and 3.
struct WindowSums {
  __m512 low = _mm512_setzero_ps();
  __m512 high = _mm512_setzero_ps();
};

__m512 LoadTwice(const float* samples) {
  return _mm512_castpd_ps(_mm512_broadcast_f64x4(_mm256_castps_pd(_mm256_loadu_ps(samples))));
}

// Adds up neighbouring lanes; in each quarter first those of a, then those of b.
__m512 AddPairs(__m512 a, __m512 b) {
  return _mm512_add_ps(_mm512_shuffle_ps(a, b, _MM_SHUFFLE(2, 0, 2, 0)),
                       _mm512_shuffle_ps(a, b, _MM_SHUFFLE(3, 1, 3, 1)));
}

// The rounded samples of four windows, one behind the other.
__m256i Samples(const WindowSums& a, const WindowSums& b, const WindowSums& c, const WindowSums& d,
                float gain) {
  const __m512 ab = AddPairs(AddPairs(a.low, a.high), AddPairs(b.low, b.high));
  const __m512 cd = AddPairs(AddPairs(c.low, c.high), AddPairs(d.low, d.high));
  // Quarters 0 and 1 are halves of the rows 0 and 2, quarters 2 and 3 of the rows 1 and 3.
  const __m512 sums = _mm512_add_ps(_mm512_shuffle_f32x4(ab, cd, _MM_SHUFFLE(2, 0, 2, 0)),
                                    _mm512_shuffle_f32x4(ab, cd, _MM_SHUFFLE(3, 1, 3, 1)));
  const __m512i whole = _mm512_cvtps_epi32(_mm512_mul_ps(sums, _mm512_set1_ps(gain)));
  const __m512i inOrder = _mm512_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7, 8, 12, 9, 13, 10, 14, 11, 15);
  return _mm512_cvtsepi32_epi16(_mm512_permutexvar_epi32(inOrder, whole));
}

// Stores four windows' samples, or as many as there are.
void Store(__m256i samples, std::size_t windows, short* output, std::size_t distance) {
  const auto store = [output, distance](std::size_t window, __m128i four) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(output + window * distance), four);
  };
  const __m128i first = _mm256_castsi256_si128(samples);
  const __m128i second = _mm256_extracti128_si256(samples, 1);
  store(0, first);
  if (windows > 1) store(1, _mm_unpackhi_epi64(first, first));
  if (windows > 2) store(2, second);
  if (windows > 3) store(3, _mm_unpackhi_epi64(second, second));
}

template <std::size_t... kWindow>
void FilterBlock(const PolyphaseWindows& windows, std::size_t first,
                 std::index_sequence<kWindow...>) noexcept {
  constexpr std::size_t kCount = sizeof...(kWindow);
  WindowSums sums[] = {(static_cast<void>(kWindow), WindowSums())...};
  const float* coefficients = windows.coefficients;
  const float* input = windows.window + first * windows.windowDistance;
  for (std::size_t step = 0; step < windows.steps; ++step) {
    const __m512 low = _mm512_load_ps(coefficients);
    const __m512 high = _mm512_load_ps(coefficients + 2 * kPolyphaseStep);
    const auto add = [&](WindowSums& sum, const float* window) {
      const __m512 samples = LoadTwice(window);
      sum.low = _mm512_fmadd_ps(low, samples, sum.low);
      sum.high = _mm512_fmadd_ps(high, samples, sum.high);
    };
    (add(sums[kWindow], input + kWindow * windows.windowDistance), ...);
    coefficients += kPolyphaseRows * kPolyphaseStep;
    input += kPolyphaseStep;
  }
  short* const output = windows.output + first * windows.outputDistance;
  const WindowSums none;
  Store(Samples(sums[0], kCount > 1 ? sums[1] : none, kCount > 2 ? sums[2] : none,
                kCount > 3 ? sums[3] : none, windows.gain),
        kCount, output, windows.outputDistance);
  if constexpr (kCount > kStoredWindows) {
    Store(Samples(sums[4], kCount > 5 ? sums[5] : none, kCount > 6 ? sums[6] : none,
                  kCount > 7 ? sums[7] : none, windows.gain),
          kCount - kStoredWindows, output + kStoredWindows * windows.outputDistance,
          windows.outputDistance);
  }
}

template <std::size_t kCount>
void FilterBlockOf(const PolyphaseWindows& windows, std::size_t first) noexcept {
  FilterBlock(windows, first, std::make_index_sequence<kCount>());
}

// A block of few windows waits for its multiply-adds, so what is left at the end is halved.
void FilterWindows(const PolyphaseWindows& windows) noexcept {
  using Block = void (*)(const PolyphaseWindows&, std::size_t);
  static constexpr Block kBlocks[kMostWindows] = {
      FilterBlockOf<1>, FilterBlockOf<2>, FilterBlockOf<3>, FilterBlockOf<4>,
      FilterBlockOf<5>, FilterBlockOf<6>, FilterBlockOf<7>, FilterBlockOf<8>};
  std::size_t done = 0;
  while (done < windows.count) {
    const std::size_t left = windows.count - done;
    std::size_t block = left;
    if (left > kMostWindows) block = left < 2 * kMostWindows ? left / 2 : kMostWindows;
    kBlocks[block - 1](windows, done);
    done += block;
  }
}

struct AVX512Vector {
  static constexpr std::size_t kLanes = 16;

  static AVX512Vector Load(const float* values) { return {_mm512_loadu_ps(values)}; }
  static AVX512Vector MultiplyAdd(AVX512Vector a, AVX512Vector b, AVX512Vector sum) {
    return {_mm512_fmadd_ps(a.lanes, b.lanes, sum.lanes)};
  }
  static AVX512Vector Broadcast(float value) { return {_mm512_set1_ps(value)}; }
  static float Sum(AVX512Vector v) { return _mm512_reduce_add_ps(v.lanes); }
  static short Round(float value) { return RoundSample<AVX512Vector>(value); }

  __m512 lanes = _mm512_setzero_ps();
};

// Those with VBMI run 512-bit multiply-adds without lowering their clock.
bool IsSupported() noexcept {
  return __builtin_cpu_supports("avx512f") != 0 && __builtin_cpu_supports("avx512vbmi") != 0;
}

}  // namespace

const PolyphaseKernel kPolyphaseAVX512 = {"AVX-512", IsSupported, FilterWindows,
                                          FilterInterpolated<AVX512Vector>};

}  // namespace Quorvex
