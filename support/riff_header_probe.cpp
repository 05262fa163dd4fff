// Layout of what is read:
//
//     "RIFF" size32 "WAVE"                      the size is not looked at
//     id32 size32 payload                       any number of chunks, without pad bytes on purpose
//       "fmt "  tag16 channels16 rate32 bytesPerSecond32 blockAlign16 [bits16]
//       "data"  audio
//
// The walk ends when both chunks were seen, or with the file. A file that ends before its "data" is
// all data, from offset 0: that is wanted, and the caller's to tell by the offset.
#include "support/riff_header_probe.h"

#include <algorithm>
#include <limits>

#include "platform/shared_stream.h"
#include "support/header_reader.h"

namespace Quorvex {
namespace {

constexpr std::size_t kChunkHeaderSize = 8;
constexpr std::size_t kFileHeaderSize = 12;
constexpr std::uint32_t kFormatSize = 14;  // of the "fmt " chunk, up to the block align
constexpr std::uint32_t kFormatSizeWithBits = 16;
constexpr std::uint16_t kBitsIfNotGiven = 8;

// Codings whose header tells no usable rate: TrueSpeech and a G.723.1.
constexpr std::uint16_t kTagsWithoutDuration[] = {0x22, 0xA100};

bool Read(std::FILE* stream, unsigned char* bytes, std::size_t count) {
  return std::fread(bytes, 1, count, stream) == count;
}

// Puts a number into a field of the record. False when it does not fit.
template <class Field>
bool Assign(std::uint64_t value, Field& field) {
  field = static_cast<Field>(value);
  return value <= std::numeric_limits<Field>::max();
}

bool ReadFormatChunk(std::uint32_t size, RIFFHeaderProbe& probe) {
  const bool isSecond = probe.formatChunkSize != 0;
  if (isSecond || size < kFormatSize) return false;
  unsigned char bytes[kFormatSizeWithBits];
  const bool hasBits = size >= kFormatSizeWithBits;
  if (!Read(probe.stream.get(), bytes, hasBits ? kFormatSizeWithBits : kFormatSize)) return false;
  probe.formatTag = static_cast<std::uint16_t>(LittleEndian16(bytes));
  probe.channels = static_cast<std::uint16_t>(LittleEndian16(bytes + 2));
  probe.samplesPerSecond = static_cast<std::int32_t>(LittleEndian32(bytes + 4));
  probe.averageBytesPerSecond = static_cast<std::int32_t>(LittleEndian32(bytes + 8));
  probe.blockAlign = static_cast<std::uint16_t>(LittleEndian16(bytes + 12));
  probe.bitsPerSample =
      hasBits ? static_cast<std::uint16_t>(LittleEndian16(bytes + 14)) : kBitsIfNotGiven;
  probe.formatChunkSize = size;
  return true;
}

bool NoteDataChunk(std::uint64_t position, std::uint32_t size, RIFFHeaderProbe& probe) {
  const bool isSecond = probe.dataOffset != 0;
  probe.dataSize = size;
  return !isSecond && Assign(position, probe.dataOffset);
}

bool WalkChunks(RIFFHeaderProbe& probe) {
  std::FILE* const stream = probe.stream.get();
  unsigned char bytes[kFileHeaderSize];
  if (!Read(stream, bytes, sizeof bytes)) return false;
  if (!IsId(bytes, "RIFF") || !IsId(bytes + 8, "WAVE")) return false;
  std::uint64_t position = kFileHeaderSize;  // sizes have 32 bits, so their sum fits
  for (int count = 0; count < kMostRIFFChunks; ++count) {
    if (!platform::SeekTo(stream, static_cast<std::int64_t>(position))) return false;
    if (!Read(stream, bytes, kChunkHeaderSize)) return std::ferror(stream) == 0;
    const std::uint32_t size = LittleEndian32(bytes + 4);
    position += kChunkHeaderSize;
    if (IsId(bytes, "fmt ") && !ReadFormatChunk(size, probe)) return false;
    if (IsId(bytes, "data") && !NoteDataChunk(position, size, probe)) return false;
    if (probe.formatChunkSize != 0 && probe.dataOffset != 0) return true;
    position += size;
  }
  return false;
}

// The data ends with the file at the latest.
bool LimitData(RIFFHeaderProbe& probe) {
  std::int64_t end = 0;
  if (!platform::SeekToEnd(probe.stream.get(), end)) return false;
  if (probe.channels < 1 || probe.samplesPerSecond < 1) return false;
  if (end < probe.dataOffset) return false;  // the file shrank meanwhile
  const std::uint64_t rest = static_cast<std::uint64_t>(end) - probe.dataOffset;
  if (probe.dataSize == 0 || probe.dataSize > rest) probe.dataSize = rest;
  return true;
}

// Some writers give the block align of one channel, some no width. False when what it should be
// does not fit.
bool MendFormat(RIFFHeaderProbe& probe) {
  const std::uint64_t channels = probe.channels;
  if (probe.blockAlign % channels != 0 && !Assign(probe.blockAlign * channels, probe.blockAlign)) {
    return false;
  }
  if (probe.bitsPerSample != 0) return true;
  if (probe.averageBytesPerSecond <= 0) return Assign(kBitsIfNotGiven, probe.bitsPerSample);
  const auto bitsPerSecond = static_cast<std::uint64_t>(probe.averageBytesPerSecond) * 8;
  return Assign(bitsPerSecond / channels / static_cast<std::uint64_t>(probe.samplesPerSecond),
                probe.bitsPerSample);
}

// value * factor / divisor, truncated, for factors and divisors of at most 32 bits. The largest
// number stands for any that does not fit.
std::uint64_t Scale(std::uint64_t value, std::uint64_t factor, std::uint64_t divisor) {
  constexpr std::uint64_t kLargest = std::numeric_limits<std::uint64_t>::max();
  const std::uint64_t whole = value / divisor;
  if (whole > (kLargest - factor) / factor) return kLargest;
  return whole * factor + value % divisor * factor / divisor;
}

std::uint32_t Milliseconds(const RIFFHeaderProbe& probe) {
  if (std::ranges::count(kTagsWithoutDuration, probe.formatTag) != 0) return 0;
  std::uint64_t milliseconds = 0;
  if (probe.averageBytesPerSecond > 0) {
    milliseconds =
        Scale(probe.dataSize, 1000, static_cast<std::uint64_t>(probe.averageBytesPerSecond));
  } else {
    const std::uint64_t frameBits = std::uint64_t{probe.bitsPerSample} * probe.channels;
    milliseconds = Scale(Scale(probe.dataSize, 8, frameBits), 1000,
                         static_cast<std::uint64_t>(probe.samplesPerSecond));
  }
  constexpr std::uint64_t kLongest = std::numeric_limits<std::uint32_t>::max();
  return static_cast<std::uint32_t>(std::min(milliseconds, kLongest));
}

bool ReadHeader(RIFFHeaderProbe& probe) {
  if (!WalkChunks(probe) || !LimitData(probe) || !MendFormat(probe)) return false;
  probe.milliseconds = Milliseconds(probe);
  return platform::SeekTo(probe.stream.get(), probe.dataOffset);
}

}  // namespace

bool RIFFHeaderProbe::Open(const wchar_t* path, bool readWrite) {
  *this = {};
  stream.reset(platform::OpenRegularStream(path, readWrite));
  if (stream != nullptr && ReadHeader(*this)) return true;
  *this = {};
  return false;
}

}  // namespace Quorvex
