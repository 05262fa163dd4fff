// Four chains of Microsoft ADPCM in the four lanes of a vector. This file alone is compiled for
// SSE4.1, and asks at run time whether the processor has it.
#include <smmintrin.h>

#include <cstdint>
#include <cstring>

#include "compression/posix/microsoft_adpcm_block.h"

namespace Quorvex {
namespace {

using Chain = MicrosoftADPCMChain;
constexpr std::size_t kWord = 4;  // bytes of codes of a block that are taken at a time

bool IsSupported() {
  static const bool isSupported = __builtin_cpu_supports("sse4.1") != 0;
  return isSupported;
}

// Byte `byte` of the adaptation of every code.
__m128i AdaptationBytes(int byte) {
  alignas(__m128i) unsigned char bytes[std::size(Chain::kMoves)];
  for (std::size_t code = 0; code < std::size(bytes); ++code) {
    bytes[code] = static_cast<unsigned char>(Chain::kMoves[code].adaptation >> (8 * byte));
  }
  return _mm_load_si128(reinterpret_cast<const __m128i*>(bytes));
}

// A number of each chain.
template <std::size_t kChannels, class Number>
__m128i Gather(const MicrosoftADPCMGroup<kChannels>& blocks, const Number& number) {
  alignas(__m128i) int lanes[kMicrosoftADPCMChains];
  for (std::size_t c = 0; c < kMicrosoftADPCMChains; ++c) {
    lanes[c] = number(blocks[c / kChannels].chains[c % kChannels]);
  }
  return _mm_load_si128(reinterpret_cast<const __m128i*>(lanes));
}

// Two 16-bit numbers in a lane.
int Pair(int lower, int upper) {
  return static_cast<int>((static_cast<unsigned>(lower) & 0xFFFF) | static_cast<unsigned>(upper)
                                                                        << 16);
}

class Chains {
 public:
  template <std::size_t kChannels>
  explicit Chains(const MicrosoftADPCMGroup<kChannels>& blocks)
      : factors_(Gather<kChannels>(blocks, [](const Chain& c) { return Pair(c.first, c.second); })),
        deltas_(Gather<kChannels>(blocks, [](const Chain& c) { return c.delta; })),
        before_(Narrow(Gather<kChannels>(blocks, [](const Chain& c) { return c.before; }))),
        beforeThat_(
            Narrow(Gather<kChannels>(blocks, [](const Chain& c) { return c.beforeThat; }))) {}

  // Takes a code in each lane and makes a 16-bit sample of each chain, in the lower half.
  __m128i Decode(__m128i codes) {
    const __m128i predicted =
        _mm_srai_epi32(_mm_madd_epi16(_mm_unpacklo_epi16(before_, beforeThat_), factors_), 8);
    const __m128i sign = _mm_set1_epi32(8);
    const __m128i times = _mm_sub_epi32(_mm_xor_si128(codes, sign), sign);
    const __m128i values = Narrow(_mm_add_epi32(predicted, _mm_mullo_epi32(times, deltas_)));
    beforeThat_ = before_;
    before_ = values;
    // Each byte looks itself up, or nothing: the first the lower byte, the second the upper.
    const __m128i lower = _mm_or_si128(codes, _mm_set1_epi32(static_cast<int>(0x80808000)));
    const __m128i upper =
        _mm_or_si128(_mm_slli_epi32(codes, 8), _mm_set1_epi32(static_cast<int>(0x80800080)));
    const __m128i adaptations = _mm_or_si128(_mm_shuffle_epi8(lowerAdaptations_, lower),
                                             _mm_shuffle_epi8(upperAdaptations_, upper));
    deltas_ = _mm_max_epi32(_mm_srai_epi32(_mm_mullo_epi32(adaptations, deltas_), 8),
                            _mm_set1_epi32(Chain::kSmallestDelta));
    return values;
  }

  template <std::size_t kChannels>
  void Leave(MicrosoftADPCMGroup<kChannels>& blocks) const {
    alignas(__m128i) int deltas[kMicrosoftADPCMChains];
    alignas(__m128i) short samples[2 * kMicrosoftADPCMChains];
    _mm_store_si128(reinterpret_cast<__m128i*>(deltas), deltas_);
    _mm_store_si128(reinterpret_cast<__m128i*>(samples), _mm_unpacklo_epi64(before_, beforeThat_));
    for (std::size_t c = 0; c < kMicrosoftADPCMChains; ++c) {
      Chain& chain = blocks[c / kChannels].chains[c % kChannels];
      chain.delta = deltas[c];
      chain.before = samples[c];
      chain.beforeThat = samples[c + kMicrosoftADPCMChains];
    }
  }

 private:
  // Limits to 16 bits.
  static __m128i Narrow(__m128i values) { return _mm_packs_epi32(values, values); }

  const __m128i lowerAdaptations_ = AdaptationBytes(0);
  const __m128i upperAdaptations_ = AdaptationBytes(1);
  const __m128i factors_;
  __m128i deltas_;
  __m128i before_;  // the last samples
  __m128i beforeThat_;
};

int Word(const unsigned char* codes) {
  int word = 0;
  std::memcpy(&word, codes, sizeof word);
  return word;
}

template <std::size_t kChannels>
struct Layout;

// Each block has a lane. The halves of its bytes are swapped, so that the first code comes first.
template <>
struct Layout<1> {
  static constexpr std::size_t kSteps = 2 * kWord;
  static constexpr int kStepBits = 4;

  static __m128i Codes(const MicrosoftADPCMGroup<1>& blocks, std::size_t i) {
    const __m128i words = _mm_setr_epi32(Word(blocks[0].codes + i), Word(blocks[1].codes + i),
                                         Word(blocks[2].codes + i), Word(blocks[3].codes + i));
    const __m128i halves = _mm_set1_epi8(15);
    return _mm_or_si128(_mm_slli_epi32(_mm_and_si128(words, halves), 4),
                        _mm_and_si128(_mm_srli_epi32(words, 4), halves));
  }

  static void Store(__m128i samples, const MicrosoftADPCMGroup<1>& blocks, std::size_t step) {
    blocks[0].samples[step] = static_cast<short>(_mm_extract_epi16(samples, 0));
    blocks[1].samples[step] = static_cast<short>(_mm_extract_epi16(samples, 1));
    blocks[2].samples[step] = static_cast<short>(_mm_extract_epi16(samples, 2));
    blocks[3].samples[step] = static_cast<short>(_mm_extract_epi16(samples, 3));
  }
};

// Each block has two lanes: for the upper halves of its bytes, and for the lower.
template <>
struct Layout<2> {
  static constexpr std::size_t kSteps = kWord;
  static constexpr int kStepBits = 8;

  static __m128i Codes(const MicrosoftADPCMGroup<2>& blocks, std::size_t i) {
    const int first = Word(blocks[0].codes + i);
    const int second = Word(blocks[1].codes + i);
    return _mm_setr_epi32(first >> 4, first, second >> 4, second);
  }

  static void Store(__m128i samples, const MicrosoftADPCMGroup<2>& blocks, std::size_t step) {
    const int frames[] = {_mm_extract_epi32(samples, 0), _mm_extract_epi32(samples, 1)};
    std::memcpy(blocks[0].samples + 2 * step, frames, sizeof(int));
    std::memcpy(blocks[1].samples + 2 * step, frames + 1, sizeof(int));
  }
};

}  // namespace

template <std::size_t kChannels>
std::size_t DecodeMicrosoftADPCMVector(MicrosoftADPCMGroup<kChannels>& blocks,
                                       std::size_t bytes) noexcept {
  using Layout = Layout<kChannels>;
  if (!IsSupported()) return 0;
  Chains chains(blocks);
  const std::size_t words = bytes / kWord;
  for (std::size_t i = 0; i < words; ++i) {
    __m128i codes = Layout::Codes(blocks, i * kWord);
    for (std::size_t step = 0; step < Layout::kSteps; ++step) {
      const __m128i samples = chains.Decode(_mm_and_si128(codes, _mm_set1_epi32(15)));
      Layout::Store(samples, blocks, i * Layout::kSteps + step);
      codes = _mm_srli_epi32(codes, Layout::kStepBits);
    }
  }
  chains.Leave(blocks);
  return words * kWord;
}
template std::size_t DecodeMicrosoftADPCMVector<1>(MicrosoftADPCMGroup<1>&, std::size_t) noexcept;
template std::size_t DecodeMicrosoftADPCMVector<2>(MicrosoftADPCMGroup<2>&, std::size_t) noexcept;

}  // namespace Quorvex
