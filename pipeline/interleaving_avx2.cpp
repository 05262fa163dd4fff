// Interleaving with AVX2. This file alone is compiled for it, and asks at run time whether the
// processor has it. It has no functions that others could share with it.
//
// Up to eight channels are a transposition: frames of up to eight samples become as many vectors of
// one channel, and back. The two halves of a vector take frames that are half a turn apart, since
// most instructions keep to their half.
#include <immintrin.h>

#include <utility>

#include "pipeline/interleaving.h"

namespace Quorvex {
namespace {

constexpr std::size_t kMostChannels = 8;      // a half has room for so many samples
constexpr std::size_t kDeinterleaveTurn = 8;  // frames
constexpr std::size_t kInterleaveTurn = 16;

bool IsSupported() {
  static const bool isSupported = __builtin_cpu_supports("avx2") != 0;
  return isSupported;
}

__m128i LoadHalf(const short* samples) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(samples));
}

__m256i LoadHalves(const short* low, const short* high) {
  return _mm256_inserti128_si256(_mm256_castsi128_si256(LoadHalf(low)), LoadHalf(high), 1);
}

__m256i Load(const short* samples) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(samples));
}

void StoreAsFloats(__m256i integers, float* output) {
  _mm256_storeu_ps(output, _mm256_cvtepi32_ps(integers));
}

// The lower and the upper 16 bits of each lane, as integers.
__m256i Lower(__m256i pairs) { return _mm256_srai_epi32(_mm256_slli_epi32(pairs, 16), 16); }
__m256i Upper(__m256i pairs) { return _mm256_srai_epi32(pairs, 16); }

// A load takes, and a store leaves, the beginning of the next frame along: so many frames at the
// end are for others to do.
constexpr std::size_t Tail(std::size_t channels) {
  return (kMostChannels + channels - 1) / channels;
}

std::size_t DeinterleaveMono(const short* input, std::size_t frames, float* output) {
  std::size_t done = 0;
  for (; done + kDeinterleaveTurn <= frames; done += kDeinterleaveTurn) {
    StoreAsFloats(_mm256_cvtepi16_epi32(LoadHalf(input + done)), output + done);
  }
  return done;
}

std::size_t DeinterleaveStereo(const short* input, std::size_t frames, float* const* outputs) {
  std::size_t done = 0;
  for (; done + kDeinterleaveTurn <= frames; done += kDeinterleaveTurn) {
    const __m256i pairs = Load(input + 2 * done);
    StoreAsFloats(Lower(pairs), outputs[0] + done);
    StoreAsFloats(Upper(pairs), outputs[1] + done);
  }
  return done;
}

template <std::size_t... kChannel>
std::size_t DeinterleaveWide(const short* input, std::size_t frames, float* const* outputs,
                             std::index_sequence<kChannel...>) {
  constexpr std::size_t kStride = sizeof...(kChannel);
  float* const output[] = {outputs[kChannel]...};
  std::size_t done = 0;
  for (; done + kDeinterleaveTurn + Tail(kStride) <= frames; done += kDeinterleaveTurn) {
    const short* const frame = input + done * kStride;
    const auto load = [frame](std::size_t f) {
      return LoadHalves(frame + f * kStride, frame + (f + kDeinterleaveTurn / 2) * kStride);
    };
    const __m256i a = load(0);
    const __m256i b = load(1);
    const __m256i c = load(2);
    const __m256i d = load(3);
    const __m256i abLow = _mm256_unpacklo_epi32(a, b);
    const __m256i cdLow = _mm256_unpacklo_epi32(c, d);
    const __m256i abHigh = _mm256_unpackhi_epi32(a, b);
    const __m256i cdHigh = _mm256_unpackhi_epi32(c, d);
    // Two channels in each lane, a frame each.
    const __m256i pairs[] = {
        _mm256_unpacklo_epi64(abLow, cdLow), _mm256_unpackhi_epi64(abLow, cdLow),
        _mm256_unpacklo_epi64(abHigh, cdHigh), _mm256_unpackhi_epi64(abHigh, cdHigh)};
    (StoreAsFloats(kChannel % 2 == 0 ? Lower(pairs[kChannel / 2]) : Upper(pairs[kChannel / 2]),
                   output[kChannel] + done),
     ...);
  }
  return done;
}

std::size_t InterleaveStereo(const short* const* inputs, std::size_t frames, short* output) {
  std::size_t done = 0;
  for (; done + kInterleaveTurn <= frames; done += kInterleaveTurn) {
    const __m256i left = Load(inputs[0] + done);
    const __m256i right = Load(inputs[1] + done);
    const __m256i low = _mm256_unpacklo_epi16(left, right);
    const __m256i high = _mm256_unpackhi_epi16(left, right);
    auto* const frames8 = reinterpret_cast<__m256i*>(output + 2 * done);
    _mm256_storeu_si256(frames8, _mm256_permute2x128_si256(low, high, 0x20));
    _mm256_storeu_si256(frames8 + 1, _mm256_permute2x128_si256(low, high, 0x31));
  }
  return done;
}

void StoreHalf(__m128i frame, short* output) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(output), frame);
}

// Four frames of eight channels from pairs of channels, in each half.
void TransposeFour(__m256i ab, __m256i cd, __m256i ef, __m256i gh, __m256i* frames) {
  const __m256i low = _mm256_unpacklo_epi32(ab, cd);
  const __m256i high = _mm256_unpackhi_epi32(ab, cd);
  const __m256i low2 = _mm256_unpacklo_epi32(ef, gh);
  const __m256i high2 = _mm256_unpackhi_epi32(ef, gh);
  frames[0] = _mm256_unpacklo_epi64(low, low2);
  frames[1] = _mm256_unpackhi_epi64(low, low2);
  frames[2] = _mm256_unpacklo_epi64(high, high2);
  frames[3] = _mm256_unpackhi_epi64(high, high2);
}

// The stores go in the order of the frames: what one leaves beyond its frame, the next overwrites.
template <std::size_t kChannels, std::size_t... kFrame>
std::size_t InterleaveWide(const short* const* inputs, std::size_t frames, short* output,
                           std::index_sequence<kFrame...>) {
  const short* input[kChannels];
  for (std::size_t c = 0; c < kChannels; ++c) input[c] = inputs[c];
  std::size_t done = 0;
  for (; done + kInterleaveTurn + Tail(kChannels) <= frames; done += kInterleaveTurn) {
    const auto load = [&](std::size_t channel) {
      return channel < kChannels ? Load(input[channel] + done) : _mm256_setzero_si256();
    };
    const __m256i a = load(0);
    const __m256i b = load(1);
    const __m256i c = load(2);
    const __m256i d = load(3);
    const __m256i e = load(4);
    const __m256i f = load(5);
    const __m256i g = load(6);
    const __m256i h = load(7);
    __m256i joined[kInterleaveTurn / 2];
    TransposeFour(_mm256_unpacklo_epi16(a, b), _mm256_unpacklo_epi16(c, d),
                  _mm256_unpacklo_epi16(e, f), _mm256_unpacklo_epi16(g, h), joined);
    TransposeFour(_mm256_unpackhi_epi16(a, b), _mm256_unpackhi_epi16(c, d),
                  _mm256_unpackhi_epi16(e, f), _mm256_unpackhi_epi16(g, h), joined + 4);
    short* const frame = output + done * kChannels;
    (StoreHalf(_mm256_castsi256_si128(joined[kFrame]), frame + kFrame * kChannels), ...);
    (StoreHalf(_mm256_extracti128_si256(joined[kFrame], 1),
               frame + (kFrame + kInterleaveTurn / 2) * kChannels),
     ...);
  }
  return done;
}

// Calls `run` with a sequence as long as there are channels, for as many as a transposition takes.
template <class Run>
std::size_t RunWide(std::size_t channels, const Run& run) {
  switch (channels) {
    case 3:
      return run(std::make_index_sequence<3>());
    case 4:
      return run(std::make_index_sequence<4>());
    case 5:
      return run(std::make_index_sequence<5>());
    case 6:
      return run(std::make_index_sequence<6>());
    case 7:
      return run(std::make_index_sequence<7>());
    case 8:
      return run(std::make_index_sequence<8>());
    default:
      return 0;
  }
}

}  // namespace

std::size_t DeinterleaveVector(const short* input, std::size_t frames, std::size_t channels,
                               float* const* outputs) noexcept {
  if (!IsSupported()) return 0;
  if (channels == 1) return DeinterleaveMono(input, frames, outputs[0]);
  if (channels == 2) return DeinterleaveStereo(input, frames, outputs);
  return RunWide(channels,
                 [&](auto sequence) { return DeinterleaveWide(input, frames, outputs, sequence); });
}

std::size_t InterleaveVector(const short* const* inputs, std::size_t channels, std::size_t frames,
                             short* output) noexcept {
  if (!IsSupported()) return 0;
  if (channels == 2) return InterleaveStereo(inputs, frames, output);
  return RunWide(channels, [&](auto sequence) {
    return InterleaveWide<decltype(sequence)::size()>(
        inputs, frames, output, std::make_index_sequence<kInterleaveTurn / 2>());
  });
}

}  // namespace Quorvex
