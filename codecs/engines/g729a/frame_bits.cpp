#include "codecs/engines/g729a/frame_bits.h"

#include <algorithm>
#include <bit>
#include <cstddef>

namespace Quorvex::g729a {
namespace {

// Goes through the fields in their order. The first bit of a frame is the top one of its first
// byte.
template <class Indices, class Field>
void VisitFields(Indices& indices, const Field& field) noexcept {
  field(1, indices.lsf.predictor);
  field(7, indices.lsf.first);
  field(5, indices.lsf.low);
  field(5, indices.lsf.high);
  for (std::size_t i = 0; i < kSubframes; ++i) {
    auto& subframe = indices.subframes[i];
    field(i == 0 ? 8 : 5, subframe.lag);
    if (i == 0) field(1, indices.parity);
    field(13, subframe.positions);
    field(4, subframe.signs);
    field(3, subframe.firstGain);
    field(4, subframe.secondGain);
  }
}

}  // namespace

unsigned ParityOf(unsigned lag) noexcept {
  return 1 ^ (static_cast<unsigned>(std::popcount(lag >> 2)) & 1);
}

FrameIndices Unpack(const unsigned char* data) noexcept {
  FrameIndices indices;
  unsigned position = 0;
  VisitFields(indices, [&](unsigned bits, unsigned& value) {
    for (const unsigned end = position + bits; position < end; ++position) {
      const unsigned byte = data[position / 8];
      value = value << 1 | (byte >> (7 - position % 8) & 1);
    }
  });
  return indices;
}

void Pack(const FrameIndices& indices, unsigned char* data) noexcept {
  std::fill_n(data, kFrameBytes, static_cast<unsigned char>(0));
  unsigned position = 0;
  VisitFields(indices, [&](unsigned bits, unsigned value) {
    for (unsigned bit = bits; bit-- > 0; ++position) {
      const unsigned isSet = value >> bit & 1;
      data[position / 8] =
          static_cast<unsigned char>(data[position / 8] | isSet << (7 - position % 8));
    }
  });
}

}  // namespace Quorvex::g729a
