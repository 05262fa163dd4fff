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

#include "support/fixed_media_file_factory.h"
#include "support/ft_log.h"

namespace Quorvex {
namespace {

constexpr std::uint32_t kMagic = 0x2E736E64;  // ".snd"
constexpr std::uint32_t kHeaderSize = 24;     // bytes
constexpr std::size_t kBlockFrames = 1024;

constexpr std::wstring_view kFormatName = L"Sun AU Format";
constexpr std::wstring_view kExtensions[] = {L"AU"};

class CAUMediaFileImpl final : public UnitMediaFile<> {
 protected:
  QVERRORCODE_TAG ReadHeader(const wchar_t*, HeaderReader& reader, UnitAudio& audio) override {
    const QVERRORCODE_TAG result = ParseAUHeader(reader, header_);
    if (result == QVERR_OK) audio = header_.audio;
    return result;
  }
  void Decode(const unsigned char* units, std::size_t count, short* samples) override {
    const int channels = header_.audio.facts.channels;
    ConvertAUSamples(header_.encoding, channels, units, count * static_cast<std::size_t>(channels),
                     samples);
  }
  std::wstring_view FormatName() const override { return kFormatName; }
  std::wstring EncodingName() const override {
    return AUEncodingName(static_cast<std::uint32_t>(header_.encoding));
  }

 private:
  AUHeader header_;
};

using CAUMediaFileFactory = FixedMediaFileFactoryOf<CAUMediaFileImpl>;
const CAUMediaFileFactory factory(kFormatName, kExtensions);

}  // namespace

QVERRORCODE_TAG ParseAUHeader(HeaderReader& reader, AUHeader& header) {
  unsigned char bytes[kHeaderSize];
  if (!reader.Read(0, bytes, sizeof bytes)) return QVERR_FILE_OPEN_FAILED;
  const std::uint32_t dataOffset = BigEndian32(bytes + 4);
  const std::uint32_t encoding = BigEndian32(bytes + 12);
  const std::uint32_t samplingFrequency = BigEndian32(bytes + 16);
  const std::uint32_t channels = BigEndian32(bytes + 20);
  if (BigEndian32(bytes) != kMagic) return QVERR_BAD_FORMAT;
  header.encoding = static_cast<AUEncoding>(encoding);
  const auto width = static_cast<std::size_t>(AUBytesPerSample(header.encoding));
  if (width == 0) {
    LibraryLog().Printf(L"AU: encoding %u is not decoded: %s", encoding, AUEncodingName(encoding));
    return QVERR_BAD_FORMAT;
  }
  if (samplingFrequency == 0 || channels == 0) return QVERR_BAD_FORMAT;
  if (dataOffset < kHeaderSize || dataOffset > reader.Size()) return QVERR_BAD_FORMAT;
  // As it is in the file, and as samples.
  const std::uint64_t blockBytes = std::uint64_t{channels} * std::max(width, sizeof(short));
  if (blockBytes * kBlockFrames > UnitLayout::kLargestBlock) return QVERR_BAD_FORMAT;
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

// <multimedia/audio_filehdr.h> of Solaris.
const wchar_t* AUEncodingName(std::uint32_t encoding) noexcept {
  switch (encoding) {
    case 1:
      return L"8-bit ISDN u-law";
    case 2:
      return L"8-bit linear PCM";
    case 3:
      return L"16-bit linear PCM";
    case 4:
      return L"24-bit linear PCM";
    case 5:
      return L"32-bit linear PCM";
    case 6:
      return L"32-bit IEEE floating point";
    case 7:
      return L"64-bit IEEE floating point";
    case 23:
      return L"4-bit CCITT G.721 ADPCM";
    case 24:
      return L"CCITT G.722 ADPCM";
    case 25:
      return L"CCITT G.723 3-bit ADPCM";
    case 26:
      return L"CCITT G.723 5-bit ADPCM";
    case 27:
      return L"8-bit ISDN A-law";
    default:
      return L"Unknown AU format code";
  }
}

const CMediaFileFactory& AUMediaFileFactory() { return factory; }

}  // namespace Quorvex
