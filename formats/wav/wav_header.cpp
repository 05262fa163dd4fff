// Layout of what is read:
//
//     "RIFF" size32 "WAVE"                      perhaps behind other chunks; its size counts
//     id32 size32 payload [pad]                 any number of chunks, padded to an even size
//       "fmt "  tag16 channels16 rate32 bytesPerSecond32 blockAlign16 bits16 extraSize16 extra
//       "fact"  frames32 ...
//       "data"  audio
//
// The walk goes to the last chunk, so that a second one of a kind is seen wherever it stands.
#include "formats/wav/wav_header.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "support/built_in_media_file.h"
#include "support/header_reader.h"

namespace Quorvex {
namespace {

using platform::FourCC;
using platform::RiffChunk;
using platform::RiffStream;

constexpr std::size_t kFormatRecord = 18;  // bytes, with the size of what follows them
constexpr std::uint32_t kLargestFormat = 4096;
constexpr std::uint32_t kFactCount = 4;  // bytes

struct Walk {
  WAVHeader& header;
  bool hasFormat = false;
  bool hasFact = false;
};

QVERRORCODE_TAG ReadExactly(RiffStream& stream, void* bytes, std::size_t count) {
  std::size_t got = 0;
  return stream.Read(bytes, count, got) && got == count ? QVERR_OK : QVERR_FILE_IO;
}

// What a short chunk lacks is 0.
QVERRORCODE_TAG ReadFormat(RiffStream& stream, const RiffChunk& chunk, Walk& walk) {
  if (walk.hasFormat || chunk.size > kLargestFormat) return QVERR_BAD_FORMAT;
  std::array<unsigned char, kLargestFormat> bytes;
  const std::size_t size = std::max<std::size_t>(chunk.size, kFormatRecord);
  std::fill_n(bytes.begin(), size, static_cast<unsigned char>(0));
  const QVERRORCODE_TAG result = ReadExactly(stream, bytes.data(), chunk.size);
  if (result != QVERR_OK) return result;
  const auto number16 = [&bytes](std::size_t offset) {
    return static_cast<std::uint16_t>(LittleEndian16(bytes.data() + offset));
  };
  const std::size_t extra = std::min<std::size_t>(number16(16), size - kFormatRecord);
  unsigned char* const end = bytes.data() + kFormatRecord + extra;
  walk.hasFormat = true;
  walk.header.format = {.tag = number16(0),
                        .channels = number16(2),
                        .samplesPerSecond = LittleEndian32(bytes.data() + 4),
                        .averageBytesPerSecond = LittleEndian32(bytes.data() + 8),
                        .blockAlign = number16(12),
                        .bitsPerSample = number16(14),
                        .extra = std::vector(bytes.data() + kFormatRecord, end)};
  return QVERR_OK;
}

QVERRORCODE_TAG ReadFact(RiffStream& stream, const RiffChunk& chunk, Walk& walk) {
  if (walk.hasFact) return QVERR_BAD_FORMAT;
  if (chunk.size < kFactCount) return QVERR_OK;
  unsigned char bytes[kFactCount];
  const QVERRORCODE_TAG result = ReadExactly(stream, bytes, sizeof bytes);
  if (result != QVERR_OK) return result;
  walk.hasFact = true;
  walk.header.factCount = LittleEndian32(bytes);
  return QVERR_OK;
}

QVERRORCODE_TAG TakeChunk(RiffStream& stream, const RiffChunk& chunk, Walk& walk) {
  switch (chunk.id) {
    case FourCC("fmt "):
      return ReadFormat(stream, chunk, walk);
    case FourCC("fact"):
      return ReadFact(stream, chunk, walk);
    case FourCC("data"):
      if (walk.header.dataOffset != 0) return QVERR_BAD_FORMAT;
      walk.header.dataOffset = chunk.offset;
      walk.header.dataSize = chunk.size;
      return QVERR_OK;
    default:
      return QVERR_OK;
  }
}

bool FindWave(RiffStream& stream, RiffChunk& riff) {
  for (int count = 0; count < kMostRIFFChunks && stream.Descend(riff, nullptr); ++count) {
    if (riff.id == platform::kRiffId && riff.type == FourCC("WAVE")) return true;
    if (!stream.Ascend(riff)) break;
  }
  return false;
}

}  // namespace

QVERRORCODE_TAG ReadWAVHeader(RiffStream& stream, WAVHeader& header) {
  RiffChunk riff;
  if (!FindWave(stream, riff)) return QVERR_BAD_FORMAT;
  Walk walk{.header = header};
  RiffChunk chunk;
  for (int count = 0; stream.Descend(chunk, &riff); ++count) {
    if (count == kMostRIFFChunks) return QVERR_BAD_FORMAT;
    const QVERRORCODE_TAG result = TakeChunk(stream, chunk, walk);
    if (result != QVERR_OK) return result;
    if (!stream.Ascend(chunk)) break;
  }
  return walk.hasFormat && header.dataOffset != 0 ? QVERR_OK : QVERR_BAD_FORMAT;
}

// Divided first, as programs that compare lengths with ours do: another order rounds differently.
std::uint32_t WAVMilliseconds(const WAVHeader& header) noexcept {
  const WaveFormat& format = header.format;
  std::uint32_t count = header.factCount;
  if (count == 0 && format.tag == kWaveTagPCM && format.blockAlign != 0) {
    count = header.dataSize / format.blockAlign;
  }
  if (count != 0 && format.samplesPerSecond != 0) {
    return ToMilliseconds(static_cast<double>(count) / format.samplesPerSecond * 1000.0);
  }
  if (format.averageBytesPerSecond == 0) return 0;
  return ToMilliseconds(static_cast<double>(header.dataSize) / format.averageBytesPerSecond *
                        1000.0);
}

}  // namespace Quorvex
