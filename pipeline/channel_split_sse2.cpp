// Taking channels apart and putting them together with SSE2, which every x86-64 processor has. Up
// to eight channels are a transposition: four frames of up to eight samples become up to eight
// vectors of four, and back.
#include <emmintrin.h>

#include <algorithm>
#include <utility>

#include "pipeline/channel_split.h"

namespace Quorvex {
namespace {

constexpr std::size_t kLanes = 8;  // 16-bit samples in a vector: the most channels of a frame

__m128i Load(const short* samples) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(samples));
}

void StoreAsFloats(__m128i integers, float* output) {
  _mm_storeu_ps(output, _mm_cvtepi32_ps(integers));
}

// The lower and the upper 16 bits of each lane, as integers.
__m128i Lower(__m128i pairs) { return _mm_srai_epi32(_mm_slli_epi32(pairs, 16), 16); }
__m128i Upper(__m128i pairs) { return _mm_srai_epi32(pairs, 16); }

std::size_t SplitMono(const short* input, std::size_t frames, float* output) {
  std::size_t done = 0;
  for (; done + kLanes <= frames; done += kLanes) {
    const __m128i samples = Load(input + done);
    StoreAsFloats(Upper(_mm_unpacklo_epi16(samples, samples)), output + done);
    StoreAsFloats(Upper(_mm_unpackhi_epi16(samples, samples)), output + done + kLanes / 2);
  }
  return done;
}

std::size_t SplitStereo(const short* input, std::size_t frames, float* const* outputs) {
  std::size_t done = 0;
  for (; done + 4 <= frames; done += 4) {
    const __m128i pairs = Load(input + 2 * done);
    StoreAsFloats(Lower(pairs), outputs[0] + done);
    StoreAsFloats(Upper(pairs), outputs[1] + done);
  }
  return done;
}

// Pairs of neighbouring channels in the lanes of four frames, for 3 to 8 channels: a load takes the
// beginning of the next frame along, so the last frames are left.
template <std::size_t... kChannel>
std::size_t SplitWide(const short* input, std::size_t frames, std::size_t stride,
                      float* const* outputs, std::index_sequence<kChannel...>) {
  float* const output[] = {outputs[kChannel]...};
  const std::size_t tail = (kLanes + stride - 1) / stride;
  std::size_t done = 0;
  for (; done + 4 + tail <= frames; done += 4) {
    const short* const frame = input + done * stride;
    const __m128i a = Load(frame);
    const __m128i b = Load(frame + stride);
    const __m128i c = Load(frame + 2 * stride);
    const __m128i d = Load(frame + 3 * stride);
    const __m128i abLow = _mm_unpacklo_epi32(a, b);
    const __m128i cdLow = _mm_unpacklo_epi32(c, d);
    const __m128i abHigh = _mm_unpackhi_epi32(a, b);
    const __m128i cdHigh = _mm_unpackhi_epi32(c, d);
    const __m128i pairs[kLanes / 2] = {
        _mm_unpacklo_epi64(abLow, cdLow), _mm_unpackhi_epi64(abLow, cdLow),
        _mm_unpacklo_epi64(abHigh, cdHigh), _mm_unpackhi_epi64(abHigh, cdHigh)};
    (StoreAsFloats(kChannel % 2 == 0 ? Lower(pairs[kChannel / 2]) : Upper(pairs[kChannel / 2]),
                   output[kChannel] + done),
     ...);
  }
  return done;
}

std::size_t JoinStereo(const short* const* inputs, std::size_t frames, short* output) {
  std::size_t done = 0;
  for (; done + kLanes <= frames; done += kLanes) {
    const __m128i left = Load(inputs[0] + done);
    const __m128i right = Load(inputs[1] + done);
    auto* const pairs = reinterpret_cast<__m128i*>(output + 2 * done);
    _mm_storeu_si128(pairs, _mm_unpacklo_epi16(left, right));
    _mm_storeu_si128(pairs + 1, _mm_unpackhi_epi16(left, right));
  }
  return done;
}

// Frames of 3 to 8 channels are stored whole vectors at a time; what a vector has beyond its frame
// is overwritten by the next, so the last frames are left.
std::size_t JoinWide(const short* const* inputs, std::size_t channels, std::size_t frames,
                     short* output) {
  const std::size_t tail = (kLanes + channels - 1) / channels;
  std::size_t done = 0;
  for (; done + kLanes + tail <= frames; done += kLanes) {
    __m128i rows[kLanes];
    for (std::size_t c = 0; c < kLanes; ++c) {
      rows[c] = Load(inputs[std::min(c, channels - 1)] + done);
    }
    __m128i pairs[kLanes];
    for (std::size_t c = 0; c < kLanes; c += 2) {
      pairs[c / 2] = _mm_unpacklo_epi16(rows[c], rows[c + 1]);
      pairs[kLanes / 2 + c / 2] = _mm_unpackhi_epi16(rows[c], rows[c + 1]);
    }
    for (std::size_t half = 0; half < 2; ++half) {
      const __m128i* const pair = pairs + half * 4;
      const __m128i low = _mm_unpacklo_epi32(pair[0], pair[1]);
      const __m128i high = _mm_unpackhi_epi32(pair[0], pair[1]);
      const __m128i low2 = _mm_unpacklo_epi32(pair[2], pair[3]);
      const __m128i high2 = _mm_unpackhi_epi32(pair[2], pair[3]);
      const __m128i frame[4] = {_mm_unpacklo_epi64(low, low2), _mm_unpackhi_epi64(low, low2),
                                _mm_unpacklo_epi64(high, high2), _mm_unpackhi_epi64(high, high2)};
      for (std::size_t f = 0; f < 4; ++f) {
        short* const place = output + (done + half * 4 + f) * channels;
        _mm_storeu_si128(reinterpret_cast<__m128i*>(place), frame[f]);
      }
    }
  }
  return done;
}

}  // namespace

std::size_t SplitChannelsVector(const short* input, std::size_t frames, std::size_t stride,
                                std::size_t channels, float* const* outputs) noexcept {
  if (channels == 0 || stride > kLanes) return 0;
  if (stride == 1) return SplitMono(input, frames, outputs[0]);
  if (stride == 2 && channels == 2) return SplitStereo(input, frames, outputs);
  switch (channels) {
    case 1: return SplitWide(input, frames, stride, outputs, std::make_index_sequence<1>());
    case 2: return SplitWide(input, frames, stride, outputs, std::make_index_sequence<2>());
    case 3: return SplitWide(input, frames, stride, outputs, std::make_index_sequence<3>());
    case 4: return SplitWide(input, frames, stride, outputs, std::make_index_sequence<4>());
    case 5: return SplitWide(input, frames, stride, outputs, std::make_index_sequence<5>());
    case 6: return SplitWide(input, frames, stride, outputs, std::make_index_sequence<6>());
    case 7: return SplitWide(input, frames, stride, outputs, std::make_index_sequence<7>());
    default: return SplitWide(input, frames, stride, outputs, std::make_index_sequence<8>());
  }
}

std::size_t JoinChannelsVector(const short* const* inputs, std::size_t channels, std::size_t frames,
                               short* output) noexcept {
  if (channels < 2 || channels > kLanes) return 0;
  if (channels == 2) return JoinStereo(inputs, frames, output);
  return JoinWide(inputs, channels, frames, output);
}

}  // namespace Quorvex
