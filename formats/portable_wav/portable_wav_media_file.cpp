// Layout of what is read:
//
//     "RIFF" size32 "WAVE"                      the size is not looked at
//     id32 size32 payload                       any number of chunks, without pad bytes on purpose
//       "fmt "  tag16 channels16 rate32 bytesPerSecond32 blockAlign16 ...
//       "data"  frames
//
// The walk ends when both chunks were seen. The width of a sample comes from the block align and
// the channel count: bits per sample is never read.
#include "formats/portable_wav/portable_wav_media_file.h"

#include <string_view>

#include "support/built_in_media_file_factory.h"
#include "support/sample_conversion.h"

namespace Quorvex {
namespace {

constexpr std::size_t kChunkHeaderSize = 8;
constexpr std::uint64_t kFirstChunk = 12;
constexpr std::uint32_t kSmallestFormat = 14;  // bytes of the "fmt " chunk that are read
constexpr std::uint32_t kMostChannels = 2;
constexpr std::uint32_t kHighestFrequency = 96'000;  // Hz
constexpr std::uint32_t kLargestBlockAlign = 4;

constexpr std::wstring_view kFormatName = L"Portable WAV Format";
constexpr std::wstring_view kExtensions[] = {L"WAV"};

// The two chunks as the file gives them.
struct Chunks {
  bool hasFormat = false;
  bool hasData = false;
  std::uint32_t tag = 0;
  std::uint32_t channels = 0;
  std::uint32_t samplingFrequency = 0;
  std::uint32_t blockAlign = 0;
  std::uint64_t dataOffset = 0;
  std::uint64_t dataSize = 0;
};

bool ReadFormatChunk(HeaderReader& reader, std::uint64_t position, std::uint32_t size,
                     Chunks& chunks) {
  unsigned char bytes[kSmallestFormat];
  if (chunks.hasFormat || size < kSmallestFormat) return false;
  if (!reader.Read(position, bytes, sizeof bytes)) return false;
  chunks.hasFormat = true;
  chunks.tag = LittleEndian16(bytes);
  chunks.channels = LittleEndian16(bytes + 2);
  chunks.samplingFrequency = LittleEndian32(bytes + 4);
  chunks.blockAlign = LittleEndian16(bytes + 12);
  return true;
}

bool WalkChunks(HeaderReader& reader, Chunks& chunks) {
  unsigned char bytes[kFirstChunk];
  if (!reader.Read(0, bytes, sizeof bytes)) return false;
  if (!IsId(bytes, "RIFF") || !IsId(bytes + 8, "WAVE")) return false;
  std::uint64_t position = kFirstChunk;
  for (int count = 0; count < kMostRIFFChunks && !(chunks.hasFormat && chunks.hasData); ++count) {
    if (!reader.Read(position, bytes, kChunkHeaderSize)) break;
    const std::uint32_t size = LittleEndian32(bytes + 4);
    position += kChunkHeaderSize;
    if (IsId(bytes, "fmt ")) {
      if (!ReadFormatChunk(reader, position, size, chunks)) return false;
    } else if (IsId(bytes, "data")) {
      if (chunks.hasData) return false;
      chunks.hasData = true;
      chunks.dataOffset = position;
      chunks.dataSize = size;
    }
    position += size;
  }
  return chunks.hasFormat && chunks.hasData;
}

bool IsAccepted(const Chunks& chunks) {
  const auto isBetween = [](std::uint32_t value, std::uint32_t low, std::uint32_t high) {
    return value >= low && value <= high;
  };
  return isBetween(chunks.channels, 1, kMostChannels) &&
         isBetween(chunks.samplingFrequency, 1, kHighestFrequency) &&
         isBetween(chunks.blockAlign, 1, kLargestBlockAlign) &&
         chunks.blockAlign % chunks.channels == 0 && chunks.dataSize % chunks.blockAlign == 0;
}

// Which widths go with which tag.
bool IsAcceptedWidth(std::uint32_t tag, std::uint32_t bytesPerSample) {
  switch (static_cast<WaveLaw>(tag)) {
    case WaveLaw::kLinear:
      return bytesPerSample != 3;
    case WaveLaw::kALaw:
    case WaveLaw::kMuLaw:
      return bytesPerSample == 1;
    default:
      return false;
  }
}

}  // namespace

QVERRORCODE_TAG ParsePortableWAVHeader(HeaderReader& reader, PortableWAVHeader& header) {
  Chunks chunks;
  if (!WalkChunks(reader, chunks)) return QVERR_BAD_FORMAT;
  if (chunks.dataOffset > reader.Size()) return QVERR_BAD_FORMAT;  // the file grew meanwhile
  if (chunks.dataSize == 0 || chunks.dataOffset + chunks.dataSize > reader.Size()) {
    chunks.dataSize = reader.Size() - chunks.dataOffset;
  }
  if (!IsAccepted(chunks)) return QVERR_BAD_FORMAT;
  const std::uint32_t bytesPerSample = chunks.blockAlign / chunks.channels;
  if (!IsAcceptedWidth(chunks.tag, bytesPerSample)) return QVERR_BAD_FORMAT;
  header.law = static_cast<WaveLaw>(chunks.tag);
  header.bytesPerSample = static_cast<int>(bytesPerSample);
  const std::uint64_t frames = chunks.dataSize / chunks.blockAlign;
  header.audio.facts = {.channels = static_cast<int>(chunks.channels),
                        .samplingFrequency = chunks.samplingFrequency,
                        .milliseconds = ToMilliseconds(static_cast<double>(frames) * 1000.0 /
                                                       chunks.samplingFrequency)};
  // A block is one second, which is part of the result for 32-bit samples: they are scaled a block
  // at a time.
  header.audio.layout = {.offset = chunks.dataOffset,
                         .size = chunks.dataSize,
                         .unitBytes = chunks.blockAlign,
                         .blockUnits = chunks.samplingFrequency};
  header.audio.needsNoDecoding = header.bytesPerSample == sizeof(short);
  return QVERR_OK;
}

namespace {

class CPortableInputWAVMediaFileImpl final : public UnitMediaFile<> {
 protected:
  QVERRORCODE_TAG ReadHeader(const wchar_t* path, HeaderReader& reader, UnitAudio& audio) override;
  QVERRORCODE_TAG Decode(const unsigned char* units, std::size_t count, short* samples) override {
    ConvertToInt16(law_, bytesPerSample_, units, count * static_cast<std::size_t>(Facts().channels),
                   samples);
    return QVERR_OK;
  }
  std::wstring_view FormatName() const override { return kFormatName; }
  std::wstring EncodingName() const override;

 private:
  WaveLaw law_ = WaveLaw::kLinear;
  int bytesPerSample_ = 0;
};

QVERRORCODE_TAG CPortableInputWAVMediaFileImpl::ReadHeader(const wchar_t*, HeaderReader& reader,
                                                           UnitAudio& audio) {
  PortableWAVHeader header;
  const QVERRORCODE_TAG result = ParsePortableWAVHeader(reader, header);
  law_ = header.law;
  bytesPerSample_ = header.bytesPerSample;
  audio = header.audio;
  return result;
}

std::wstring CPortableInputWAVMediaFileImpl::EncodingName() const {
  if (law_ == WaveLaw::kALaw) return kALawName;
  if (law_ == WaveLaw::kMuLaw) return kMuLawName;
  return bytesPerSample_ == 1 ? L"Uncompressed unsigned 8-bit linear PCM"
                              : L"Uncompressed signed 16-bit linear PCM";
}

using CPortableInputWAVMediaFileFactory = BuiltInMediaFileFactoryOf<CPortableInputWAVMediaFileImpl>;
const CPortableInputWAVMediaFileFactory factory(kFormatName, kExtensions);

}  // namespace

const CMediaFileFactory& PortableInputWAVMediaFileFactory() { return factory; }

}  // namespace Quorvex
