// G.711 expansion sixteen code words at a time. This file alone is compiled for SSSE3, and asks at
// run time whether the processor has it.
//
// The code words that share their high nibble (sign and segment) lie on a line:
//
//     value = first[high] + step[high] x low
//
// (low: the low nibble, A-law's inverted bits undone), so two tables of sixteen 16-bit entries,
// which fit the byte shuffle, replace one of 256.
#include <tmmintrin.h>

#include "support/g711.h"

namespace Quorvex {
namespace {

constexpr unsigned kALawLowInversion = 5;  // the low nibble of 0x55
constexpr std::size_t kStep = 16;

// Sixteen 16-bit entries as two vectors of bytes, the form that a byte shuffle looks up.
struct NibbleTable {
  alignas(16) unsigned char low[16];
  alignas(16) unsigned char high[16];

  void Set(std::size_t index, int value) {
    low[index] = static_cast<unsigned char>(value & 0xFF);
    high[index] = static_cast<unsigned char>((value >> 8) & 0xFF);
  }
};

__m128i LoadAligned(const unsigned char* bytes) {
  return _mm_load_si128(reinterpret_cast<const __m128i*>(bytes));
}

// The entries of a table for sixteen nibbles, as two vectors of 16-bit lanes.
struct Entries {
  __m128i first;
  __m128i second;
};

Entries LookUp(__m128i lowBytes, __m128i highBytes, __m128i nibbles) {
  const __m128i low = _mm_shuffle_epi8(lowBytes, nibbles);
  const __m128i high = _mm_shuffle_epi8(highBytes, nibbles);
  return {_mm_unpacklo_epi8(low, high), _mm_unpackhi_epi8(low, high)};
}

}  // namespace

std::size_t ExpandG711Vector(WaveLaw law, const unsigned char* codes, std::size_t count,
                             short* samples) noexcept {
  static const bool isSupported = __builtin_cpu_supports("ssse3") != 0;
  if (!isSupported) return 0;
  const G711Table& table = law == WaveLaw::kALaw ? kG711ALaw : kG711MuLaw;
  const unsigned inversion = law == WaveLaw::kALaw ? kALawLowInversion : 0;
  NibbleTable firsts;
  NibbleTable steps;
  for (std::size_t high = 0; high < 16; ++high) {
    const int first = table[high << 4 | inversion];
    firsts.Set(high, first);
    steps.Set(high, table[high << 4 | (inversion ^ 1U)] - first);
  }
  const __m128i firstLow = LoadAligned(firsts.low);
  const __m128i firstHigh = LoadAligned(firsts.high);
  const __m128i stepLow = LoadAligned(steps.low);
  const __m128i stepHigh = LoadAligned(steps.high);
  const __m128i nibbleMask = _mm_set1_epi8(15);
  const __m128i inverted = _mm_set1_epi8(static_cast<char>(inversion));
  const __m128i zero = _mm_setzero_si128();
  std::size_t done = 0;
  for (; done + kStep <= count; done += kStep) {
    const __m128i code = _mm_loadu_si128(reinterpret_cast<const __m128i*>(codes + done));
    const __m128i low = _mm_xor_si128(_mm_and_si128(code, nibbleMask), inverted);
    const __m128i high = _mm_and_si128(_mm_srli_epi16(code, 4), nibbleMask);
    const Entries first = LookUp(firstLow, firstHigh, high);
    const Entries step = LookUp(stepLow, stepHigh, high);
    auto* const output = reinterpret_cast<__m128i*>(samples + done);
    _mm_storeu_si128(
        output,
        _mm_add_epi16(first.first, _mm_mullo_epi16(step.first, _mm_unpacklo_epi8(low, zero))));
    _mm_storeu_si128(
        output + 1,
        _mm_add_epi16(first.second, _mm_mullo_epi16(step.second, _mm_unpackhi_epi8(low, zero))));
  }
  return done;
}

}  // namespace Quorvex
