// Layout of what is read, all numbers big-endian:
//
//     ".snd" dataOffset32 dataSize32 encoding32 rate32 channels32
//     annotation                                up to the data offset, not looked at
//     frames                                    up to the end of the file
//
// The data size is not used, on purpose: programs that write to a pipe leave anything in it.
#include "formats/au/au_media_file.h"

#include <algorithm>
#include <string_view>

#include "support/built_in_media_file_factory.h"
#include "support/ft_log.h"

namespace Quorvex {
namespace {

constexpr std::uint32_t kMagic = 0x2E736E64;  // ".snd"
constexpr std::uint32_t kHeaderSize = 24;     // bytes
constexpr std::size_t kBlockFrames = 1024;
constexpr std::uint64_t kLargestBlock = 16 << 20;  // bytes; ours: a header may ask for terabytes

constexpr std::wstring_view kFormatName = L"Sun AU Format";
constexpr std::wstring_view kExtensions[] = {L"AU"};

struct Encoding {
  std::uint32_t code;
  std::size_t bytesPerSample;  // 0: not decoded
  const wchar_t* name;
};

// The codes of <multimedia/audio_filehdr.h>.
constexpr Encoding kEncodings[] = {
    {1, 1, L"8-bit ISDN u-law"},           {2, 1, L"8-bit linear PCM"},
    {3, 2, L"16-bit linear PCM"},          {4, 3, L"24-bit linear PCM"},
    {5, 4, L"32-bit linear PCM"},          {6, 4, L"32-bit IEEE floating point"},
    {7, 8, L"64-bit IEEE floating point"}, {23, 0, L"4-bit CCITT G.721 ADPCM"},
    {24, 0, L"CCITT G.722 ADPCM"},         {25, 0, L"CCITT G.723 3-bit ADPCM"},
    {26, 0, L"CCITT G.723 5-bit ADPCM"},   {27, 1, L"8-bit ISDN A-law"},
};
constexpr Encoding kUnknownEncoding = {0, 0, L"Unknown AU format code"};

const Encoding& FindEncoding(std::uint32_t code) {
  for (const Encoding& encoding : kEncodings) {
    if (encoding.code == code) return encoding;
  }
  return kUnknownEncoding;
}

}  // namespace

const wchar_t* AUEncodingName(std::uint32_t encoding) noexcept {
  return FindEncoding(encoding).name;
}

QVERRORCODE_TAG ParseAUHeader(HeaderReader& reader, AUHeader& header) {
  unsigned char bytes[kHeaderSize];
  if (!reader.Read(0, bytes, sizeof bytes)) return QVERR_FILE_OPEN_FAILED;
  if (BigEndian32(bytes) != kMagic) return QVERR_BAD_FORMAT;
  const std::uint32_t dataOffset = BigEndian32(bytes + 4);
  header.encoding = BigEndian32(bytes + 12);
  const std::uint32_t samplingFrequency = BigEndian32(bytes + 16);
  const std::uint32_t channels = BigEndian32(bytes + 20);
  const std::size_t width = FindEncoding(header.encoding).bytesPerSample;
  if (width == 0 || samplingFrequency == 0 || channels == 0) return QVERR_BAD_FORMAT;
  if (dataOffset < kHeaderSize || dataOffset > reader.Size()) return QVERR_BAD_FORMAT;
  // A block as it is in the file, and as samples.
  const std::size_t widest = std::max(width, sizeof(short));
  if (channels > kLargestBlock / (widest * kBlockFrames)) return QVERR_BAD_FORMAT;
  header.audio.layout = {.offset = dataOffset,
                         .size = UnitLayout::kToTheEnd,
                         .unitBytes = channels * width,
                         .blockUnits = kBlockFrames};
  const auto dataBytes = static_cast<double>(reader.Size() - dataOffset);
  const auto frameBytes = static_cast<double>(header.audio.layout.unitBytes);
  header.audio.facts = {
      .channels = static_cast<int>(channels),
      .samplingFrequency = samplingFrequency,
      .milliseconds = ToMilliseconds(1000.0 / samplingFrequency * dataBytes / frameBytes)};
  return QVERR_OK;
}

namespace {

class CAUMediaFileImpl final : public UnitMediaFile<> {
 protected:
  QVERRORCODE_TAG ReadHeader(const wchar_t* path, HeaderReader& reader, UnitAudio& audio) override;
  QVERRORCODE_TAG Decode(const unsigned char* units, std::size_t count, short* samples) override {
    const int channels = Facts().channels;
    ConvertAUSamples(static_cast<AUEncoding>(encoding_), channels, units,
                     count * static_cast<std::size_t>(channels), samples);
    return QVERR_OK;
  }
  std::wstring_view FormatName() const override { return kFormatName; }
  std::wstring EncodingName() const override { return AUEncodingName(encoding_); }

 private:
  std::uint32_t encoding_ = 0;
};

QVERRORCODE_TAG CAUMediaFileImpl::ReadHeader(const wchar_t* path, HeaderReader& reader,
                                             UnitAudio& audio) {
  AUHeader header;
  const QVERRORCODE_TAG result = ParseAUHeader(reader, header);
  if (result == QVERR_BAD_FORMAT && header.encoding != 0) {
    LibraryLog().Printf(L"%s: refused; its encoding is %u, %s", path, header.encoding,
                        AUEncodingName(header.encoding));
  }
  encoding_ = header.encoding;
  audio = header.audio;
  return result;
}

using CAUMediaFileFactory = BuiltInMediaFileFactoryOf<CAUMediaFileImpl>;
const CAUMediaFileFactory factory(kFormatName, kExtensions);

}  // namespace

const CMediaFileFactory& AUMediaFileFactory() { return factory; }

}  // namespace Quorvex
