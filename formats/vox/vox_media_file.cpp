// Layout: bytes of two samples each, from the first to the last.
#include "formats/vox/vox_media_file.h"

#include <atomic>
#include <string_view>
#include <utility>

#include <MediaAccessor/vox_media_file.h>

#include "formats/vox/vox_decoder.h"
#include "support/built_in_media_file_factory.h"
#include "support/text.h"
#include "support/unit_media_file.h"

namespace Quorvex {
namespace {

constexpr std::uint32_t kInitialDefaultFrequency = 6000;  // Hz
constexpr std::uint32_t kVX8Frequency = 8000;             // Hz
constexpr std::size_t kBlockBytes = 1024;
constexpr std::size_t kSamplesPerByte = 2;

constexpr std::wstring_view kFormatName = L"Oki/Dialogic VOX Format";
constexpr std::wstring_view kExtensions[] = {L"VOX", L"VX8"};

std::atomic<std::uint32_t> defaultFrequency = kInitialDefaultFrequency;

class CVOXMediaFileImpl final : public UnitMediaFile<CVOXMediaFile> {
 public:
  QVERRORCODE_TAG SetSamplingFrequency(unsigned long hertz) override {
    if (IsOpen()) return QVERR_ALREADY_OPEN;
    if (!std::in_range<std::uint32_t>(hertz)) return QVERR_INVALID_ARGUMENT;
    override_ = static_cast<std::uint32_t>(hertz);
    return QVERR_OK;
  }

 protected:
  QVERRORCODE_TAG ReadHeader(const wchar_t* path, HeaderReader& reader, UnitAudio& audio) override;
  QVERRORCODE_TAG Decode(const unsigned char* units, std::size_t count, short* samples) override {
    decoder_.Decode(units, count, samples);
    return QVERR_OK;
  }
  std::wstring_view FormatName() const override { return kFormatName; }
  std::wstring EncodingName() const override {
    return std::to_wstring(GetSamplingFrequency()) + L"Hz ADPCM";
  }

 private:
  std::uint32_t override_ = 0;  // of the default frequency, in Hz; 0: none
  VOXDecoder decoder_;
};

// There is no header: what it would say is decided here.
QVERRORCODE_TAG CVOXMediaFileImpl::ReadHeader(const wchar_t* path, HeaderReader& reader,
                                              UnitAudio& audio) {
  std::uint32_t frequency = override_ != 0 ? override_ : defaultFrequency.load();
  // Wanted: the name goes before the override.
  if (HasExtension(path, L"VX8")) frequency = kVX8Frequency;
  const auto samples = static_cast<double>(reader.Size()) * kSamplesPerByte;
  audio.facts = {.channels = 1,
                 .samplingFrequency = frequency,
                 .milliseconds = ToMilliseconds(1000.0 / frequency * samples)};
  audio.layout = {
      .offset = 0, .size = UnitLayout::kToTheEnd, .unitBytes = 1, .blockUnits = kBlockBytes};
  audio.unitFrames = kSamplesPerByte;
  decoder_ = {};
  return QVERR_OK;
}

using CVOXMediaFileFactory = BuiltInMediaFileFactoryOf<CVOXMediaFileImpl>;
const CVOXMediaFileFactory factory(kFormatName, kExtensions);

}  // namespace

CVOXMediaFile::CVOXMediaFile() = default;
CVOXMediaFile::~CVOXMediaFile() = default;

CVOXMediaFile* CVOXMediaFile::CreateInstance() noexcept { return new CVOXMediaFileImpl; }

void CVOXMediaFile::SetDefaultSamplingFrequency(unsigned long hertz) noexcept {
  if (hertz == 0 || !std::in_range<std::uint32_t>(hertz)) return;
  defaultFrequency = static_cast<std::uint32_t>(hertz);
}

const CMediaFileFactory& VOXMediaFileFactory() { return factory; }

}  // namespace Quorvex
