// The two expansion tables and the compression, formed from the structure of a code word:
//
//     bit   7     6..4      3..0
//           sign  segment   interval within the segment
#include "support/g711.h"

#include <algorithm>
#include <bit>

namespace Quorvex {
namespace {

// A-law: the even bits are inverted on the line (0x55); a set sign bit is positive. Segment 0 and 1
// have the same step; from there each doubles. Values lie in the middle of their interval.
constexpr std::int16_t ExpandALaw(int code) {
  code ^= 0x55;
  const int segment = (code >> 4) & 7;
  const int interval = code & 15;
  const int magnitude = segment == 0 ? interval * 16 + 8 : (interval * 16 + 0x108) << (segment - 1);
  return static_cast<std::int16_t>((code & 0x80) != 0 ? magnitude : -magnitude);
}

// mu-law: all bits are inverted on the line; a set sign bit is then negative. The bias of 33 steps
// (0x84 at this scale) makes the segments powers of two.
constexpr std::int16_t ExpandMuLaw(int code) {
  constexpr int kBias = 0x84;
  code = ~code & 0xFF;
  const int segment = (code >> 4) & 7;
  const int interval = code & 15;
  const int magnitude = ((interval * 8 + kBias) << segment) - kBias;
  return static_cast<std::int16_t>((code & 0x80) != 0 ? -magnitude : magnitude);
}

unsigned Magnitude(short sample) { return static_cast<unsigned>(sample < 0 ? ~sample : sample); }

// Segments 0 and 1 share a step, so that 32 intervals come before the first doubling.
unsigned char CompressALaw(short sample) {
  const unsigned magnitude = Magnitude(sample) >> 4;
  const int segment = std::max(static_cast<int>(std::bit_width(magnitude)) - 4, 0);
  const unsigned interval = magnitude >> std::max(segment - 1, 0) & 15;
  const unsigned sign = sample < 0 ? 0 : 0x80;
  return static_cast<unsigned char>((sign | static_cast<unsigned>(segment) << 4 | interval) ^ 0x55);
}

unsigned char CompressMuLaw(short sample) {
  constexpr unsigned kBias = 33;
  constexpr unsigned kLargest = 0x1FFF;
  const unsigned magnitude = std::min((Magnitude(sample) >> 2) + kBias, kLargest);
  const int segment = std::max(static_cast<int>(std::bit_width(magnitude)) - 6, 0);
  const unsigned interval = magnitude >> (segment + 1) & 15;
  const unsigned sign = sample < 0 ? 0x80 : 0;
  return static_cast<unsigned char>(~(sign | static_cast<unsigned>(segment) << 4 | interval));
}

template <class Expand>
constexpr G711Table MakeTable(Expand expand) {
  G711Table table{};
  for (int code = 0; code < 256; ++code) table[static_cast<std::size_t>(code)] = expand(code);
  return table;
}

}  // namespace

constinit const G711Table kG711ALaw = MakeTable(ExpandALaw);
constinit const G711Table kG711MuLaw = MakeTable(ExpandMuLaw);

void ExpandG711(WaveLaw law, const unsigned char* codes, std::size_t count,
                short* samples) noexcept {
  const G711Table& table = law == WaveLaw::kALaw ? kG711ALaw : kG711MuLaw;
  for (std::size_t i = ExpandG711Vector(law, codes, count, samples); i < count; ++i) {
    samples[i] = table[codes[i]];
  }
}

void CompressG711(WaveLaw law, const short* samples, std::size_t count,
                  unsigned char* codes) noexcept {
  if (law == WaveLaw::kALaw) {
    std::transform(samples, samples + count, codes, CompressALaw);
  } else {
    std::transform(samples, samples + count, codes, CompressMuLaw);
  }
}

}  // namespace Quorvex
