// The mixer's loops with SSE2, which every x86-64 processor has.
//
// A selection is a vector of weights: how often each channel is selected. One multiply-add of a
// frame with the weights leaves sums of neighbouring channels, whatever is selected; adding those
// up for four frames at a time is a transposition:
//
//     frame  c0 c1 c2 c3 c4 c5 c6 c7   x   w0 w1 w2 w3 w4 w5 w6 w7     (channels past the last
//            c0w0+c1w1  c2w2+c3w3  c4w4+c5w5  c6w6+c7w7                 have the weight 0)
//
// Dividing: up to kMostSelected channels a sum (below 2^23) is exact in single precision, and the
// rounding of the quotient (at most 2^-10) is smaller than its distance from the next integer (at
// least 1/n), so truncating it gives the integer quotient.
#include <emmintrin.h>

#include "pipeline/mix_loops.h"

namespace Quorvex {
namespace {

constexpr int kLanes = 8;         // 16-bit samples in a vector: the most channels of a frame
constexpr std::size_t kStep = 8;  // frames a turn
constexpr std::size_t kMostSelected = 256;

__m128i Load(const short* samples) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(samples));
}

// The sums of four stereo frames.
struct StereoSums {
  __m128i weights;
  __m128i operator()(const short* input) const { return _mm_madd_epi16(Load(input), weights); }
};

// The sums of four frames of 3 to 8 channels.
struct WideSums {
  __m128i weights;
  std::size_t stride;
  __m128i operator()(const short* input) const {
    const __m128i a = _mm_madd_epi16(Load(input), weights);
    const __m128i b = _mm_madd_epi16(Load(input + stride), weights);
    const __m128i c = _mm_madd_epi16(Load(input + 2 * stride), weights);
    const __m128i d = _mm_madd_epi16(Load(input + 3 * stride), weights);
    const __m128i ab = _mm_add_epi32(_mm_unpacklo_epi32(a, b), _mm_unpackhi_epi32(a, b));
    const __m128i cd = _mm_add_epi32(_mm_unpacklo_epi32(c, d), _mm_unpackhi_epi32(c, d));
    return _mm_add_epi32(_mm_unpacklo_epi64(ab, cd), _mm_unpackhi_epi64(ab, cd));
  }
};

struct Keep {
  __m128i operator()(__m128i sums) const { return sums; }
};

// Adding the sign bit before the shift truncates towards zero.
struct Halve {
  __m128i operator()(__m128i sums) const {
    return _mm_srai_epi32(_mm_add_epi32(sums, _mm_srli_epi32(sums, 31)), 1);
  }
};

struct Divide {
  __m128 divisor;
  __m128i operator()(__m128i sums) const {
    return _mm_cvttps_epi32(_mm_div_ps(_mm_cvtepi32_ps(sums), divisor));
  }
};

template <class Sums, class Finish>
std::size_t Run(const short* input, std::size_t frames, std::size_t stride, short* output,
                const Sums& sums, const Finish& finish) {
  const __m128i minimum = _mm_set1_epi16(kMixMinimum);
  // A load is a whole vector: the last frames, where it would pass the end of the input, are left.
  const std::size_t tail = (kLanes + stride - 1) / stride;
  std::size_t done = 0;
  for (; done + kStep + tail <= frames; done += kStep) {
    const short* const frame = input + done * stride;
    const __m128i low = finish(sums(frame));
    const __m128i high = finish(sums(frame + 4 * stride));
    const __m128i packed = _mm_max_epi16(_mm_packs_epi32(low, high), minimum);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(output + done), packed);
  }
  return done;
}

template <class Sums>
std::size_t RunWithRule(MixRule rule, const short* input, std::size_t frames, std::size_t stride,
                        std::size_t selectedCount, short* output, const Sums& sums) {
  if (rule == MixRule::kSum || selectedCount == 1) {
    return Run(input, frames, stride, output, sums, Keep());
  }
  if (selectedCount == 2) return Run(input, frames, stride, output, sums, Halve());
  return Run(input, frames, stride, output, sums,
             Divide{_mm_set1_ps(static_cast<float>(selectedCount))});
}

}  // namespace

std::size_t MixCombinedVector(MixRule rule, const short* input, std::size_t frames,
                              int inputChannels, std::span<const int> selected,
                              short* output) noexcept {
  if (inputChannels < 2 || inputChannels > kLanes) return 0;
  if (selected.empty() || selected.size() > kMostSelected) return 0;
  short weights[kLanes] = {};
  for (const int channel : selected) ++weights[channel];
  const auto stride = static_cast<std::size_t>(inputChannels);
  if (stride == 2) {
    for (int lane = 2; lane < kLanes; ++lane) weights[lane] = weights[lane - 2];
    return RunWithRule(rule, input, frames, stride, selected.size(), output,
                       StereoSums{Load(weights)});
  }
  return RunWithRule(rule, input, frames, stride, selected.size(), output,
                     WideSums{Load(weights), stride});
}

}  // namespace Quorvex
