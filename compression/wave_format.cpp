// WAVE_FORMAT_EXTENSIBLE. What follows the record:
//
//     validBits16 speakers32 tag16 kTagGUIDEnd      the tag and the rest are one GUID
#include "compression/wave_format.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

#include "support/header_reader.h"

namespace Quorvex {
namespace {

constexpr std::size_t kTagOffset = 6;
constexpr std::size_t kGUIDEndOffset = 8;
// The same for every coding that has a tag. Source: RFC 2361.
constexpr unsigned char kTagGUIDEnd[] = {0x00, 0x00, 0x00, 0x00, 0x10, 0x00, 0x80,
                                         0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71};

}  // namespace

WaveFormat PlainFormat(const WaveFormat& format) {
  WaveFormat plain = format;
  const auto& extra = format.extra;
  constexpr std::size_t kBytes = kGUIDEndOffset + sizeof kTagGUIDEnd;
  if (format.tag != kWaveTagExtensible || extra.size() < kBytes ||
      !std::equal(std::begin(kTagGUIDEnd), std::end(kTagGUIDEnd), extra.begin() + kGUIDEndOffset)) {
    return plain;
  }
  plain.tag = static_cast<std::uint16_t>(LittleEndian16(extra.data() + kTagOffset));
  plain.extra.assign(extra.begin() + kBytes, extra.end());
  return plain;
}

}  // namespace Quorvex
