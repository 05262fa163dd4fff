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

#include <algorithm>
#include <cstring>
#include <limits>
#include <string_view>

#include <MediaAccessor/multi_channel_media_file.h>

#include "platform/input_file.h"
#include "support/allocator.h"
#include "support/cft_array.h"
#include "support/fixed_media_file_factory.h"
#include "support/no_throw.h"
#include "support/sample_conversion.h"
#include "support/text.h"

namespace Quorvex {
namespace {

constexpr std::size_t kChunkHeaderSize = 8;
constexpr std::uint64_t kFirstChunk = 12;
constexpr int kMostChunks = 100'000;  // ours: a walk through gigabytes of empty chunks ends here
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

bool IsId(const unsigned char* bytes, std::string_view id) {
  return std::memcmp(bytes, id.data(), id.size()) == 0;
}

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
  for (int count = 0; count < kMostChunks && !(chunks.hasFormat && chunks.hasData); ++count) {
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

std::wstring_view EncodingName(WaveLaw law, int bytesPerSample) {
  if (law == WaveLaw::kALaw) return L"CCITT A-Law";
  if (law == WaveLaw::kMuLaw) return L"CCITT u-Law";
  return bytesPerSample == 1 ? L"Uncompressed unsigned 8-bit linear PCM"
                             : L"Uncompressed signed 16-bit linear PCM";
}

class CPortableInputWAVMediaFileImpl final : public MultiChannelMediaFile, public AllocatedObject {
 public:
  using CMediaAccessor::GetDescription;
  using CMediaFile::GetFormatDescription;

  unsigned long GetSamplingFrequency() const override { return header_.samplingFrequency; }
  int GetTrackChannelCount() const override { return header_.channels; }
  unsigned long GetMilliseconds() const override { return header_.milliseconds; }
  unsigned long GetDescription(wchar_t* buffer, unsigned long capacity) const override {
    return CopyText(kFormatName, buffer, capacity);
  }
  unsigned long GetFormatDescription(wchar_t* buffer, unsigned long capacity) const override {
    return CopyText(file_.IsOpen() ? EncodingName(header_.law, header_.bytesPerSample)
                                   : std::wstring_view(L"File not open"),
                    buffer, capacity);
  }

 protected:
  QVERRORCODE_TAG OpenFormat(const wchar_t* path) override;
  void CloseFormat() override;
  QVERRORCODE_TAG ReadRawBlock(const short*& samples, unsigned long& frames,
                               void* context) override;

 private:
  bool AllocateBuffers();

  platform::InputFile file_;
  PortableWAVHeader header_;
  std::uint64_t position_ = 0;     // frames read so far
  std::uint64_t blockFrames_ = 0;  // frames in a whole block: one second
  CFTarray<unsigned char> input_;  // a block as it is in the file, unless it is 16-bit PCM
  CFTarray<short> samples_;        // a block of samples; 16-bit PCM is read right into it
};

QVERRORCODE_TAG CPortableInputWAVMediaFileImpl::OpenFormat(const wchar_t* path) {
  return NoThrow([&] {
    if (!file_.Open(path)) return QVERR_FILE_OPEN_FAILED;
    HeaderReader reader(file_);
    QVERRORCODE_TAG result = ParsePortableWAVHeader(reader, header_);
    if (result == QVERR_OK && !AllocateBuffers()) result = QVERR_CREATE_FAILED;
    if (result != QVERR_OK) CloseFormat();
    return result;
  });
}

// A block is one second, at most 96,000 frames of 4 bytes. The length is part of the result for
// 32-bit samples, which are scaled a block at a time.
bool CPortableInputWAVMediaFileImpl::AllocateBuffers() {
  blockFrames_ = std::min<std::uint64_t>(header_.frames, header_.samplingFrequency);
  const auto samples =
      static_cast<std::size_t>(blockFrames_) * static_cast<std::size_t>(header_.channels);
  const std::size_t width = static_cast<std::size_t>(header_.bytesPerSample);
  return samples_.Resize(samples) && (width == sizeof(short) || input_.Resize(samples * width));
}

void CPortableInputWAVMediaFileImpl::CloseFormat() {
  file_.Close();
  header_ = {};
  position_ = 0;
  blockFrames_ = 0;
  input_.Reset();
  samples_.Reset();
}

QVERRORCODE_TAG CPortableInputWAVMediaFileImpl::ReadRawBlock(const short*& samples,
                                                             unsigned long& frames, void*) {
  if (!file_.IsOpen()) return QVERR_FILE_NOT_OPEN;
  const auto wanted = static_cast<std::size_t>(std::min(header_.frames - position_, blockFrames_));
  if (wanted == 0) return QVERR_OK;
  const auto channels = static_cast<std::size_t>(header_.channels);
  const bool isPlain = header_.bytesPerSample == sizeof(short);
  const std::size_t frameBytes = channels * static_cast<std::size_t>(header_.bytesPerSample);
  void* const input = isPlain ? static_cast<void*>(samples_.Data()) : input_.Data();
  std::size_t got = 0;
  if (!file_.ReadAt(header_.dataOffset + position_ * frameBytes, input, wanted * frameBytes, got)) {
    return QVERR_FILE_IO;
  }
  // The data was all there when the file was opened: without a whole frame it has been cut since.
  const std::size_t gotFrames = got / frameBytes;
  if (gotFrames == 0) return QVERR_FILE_IO;
  position_ += gotFrames;
  if (!isPlain) {
    ConvertToInt16(header_.law, header_.bytesPerSample, input_.Data(), gotFrames * channels,
                   samples_.Data());
  }
  samples = samples_.Data();
  frames = static_cast<unsigned long>(gotFrames);
  return QVERR_OK;
}

class CPortableInputWAVMediaFileFactory final : public FixedMediaFileFactory {
 public:
  CPortableInputWAVMediaFileFactory() : FixedMediaFileFactory(kFormatName, kExtensions) {}
  CMediaFile* CreateMediaFile() const override { return new CPortableInputWAVMediaFileImpl; }
};

const CPortableInputWAVMediaFileFactory factory;

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
  header.channels = static_cast<int>(chunks.channels);
  header.samplingFrequency = chunks.samplingFrequency;
  header.bytesPerSample = static_cast<int>(bytesPerSample);
  header.dataOffset = chunks.dataOffset;
  header.frames = chunks.dataSize / chunks.blockAlign;
  const double milliseconds =
      static_cast<double>(header.frames) * 1000.0 / static_cast<double>(header.samplingFrequency);
  constexpr std::uint32_t kLongest = std::numeric_limits<std::uint32_t>::max();
  header.milliseconds =
      milliseconds < kLongest ? static_cast<std::uint32_t>(milliseconds) : kLongest;
  return QVERR_OK;
}

const CMediaFileFactory& PortableInputWAVMediaFileFactory() { return factory; }

}  // namespace Quorvex
