// The engine as a media file, and its factory.
#include <MediaAccessor/input_wav_media_file.h>

#include <string_view>

#include "formats/wav/wav_media_file.h"
#include "formats/wav/wave_format_names.h"
#include "support/built_in_media_file.h"
#include "support/built_in_media_file_factory.h"

namespace Quorvex {
namespace {

constexpr std::wstring_view kFormatName = L"Microsoft WAV Format";
constexpr std::wstring_view kExtensions[] = {L"WAV"};

class CInputWAVMediaFileImpl final : public BuiltInMediaFile<CInputWAVMediaFile> {
 protected:
  QVERRORCODE_TAG OpenAudio(const wchar_t* path) override {
    return engine_.Open(path, CWAVMediaFileImpl::kModeRead);
  }
  void CloseFormat() override { engine_.Close(); }
  QVERRORCODE_TAG ReadRawBlock(const short*& samples, unsigned long& frames, void*) override {
    return engine_.Read(samples, frames);
  }
  const AudioFacts& Facts() const override { return engine_.Facts(); }
  std::wstring_view FormatName() const override { return kFormatName; }
  std::wstring EncodingName() const override {
    return std::wstring(WaveFormatName(engine_.FormatTag()));
  }

 private:
  CWAVMediaFileImpl engine_;
};

using CInputWAVMediaFileFactory = BuiltInMediaFileFactoryOf<CInputWAVMediaFileImpl>;
const CInputWAVMediaFileFactory factory(kFormatName, kExtensions);

}  // namespace

CInputWAVMediaFile::CInputWAVMediaFile() = default;
CInputWAVMediaFile::~CInputWAVMediaFile() = default;

CInputWAVMediaFile* CInputWAVMediaFile::CreateInstance() noexcept {
  return new CInputWAVMediaFileImpl;
}

const CMediaFileFactory& CInputWAVMediaFile::Factory() noexcept { return factory; }

}  // namespace Quorvex
