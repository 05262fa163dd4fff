// The driver: pulls a source to its end and writes it, into a file that has no name until it is
// whole.
#include <MediaAccessor/media_accessor.h>
#include <MediaAccessor/wav_file_writer.h>

#include <string_view>
#include <utility>

#include "formats/wav/output_wav_media_file.h"
#include "platform/pending_file.h"
#include "support/allocator.h"
#include "support/no_throw.h"
#include "support/text.h"

namespace Quorvex {
namespace {

constexpr std::wstring_view kDescription = L"WAV File Writer";

class CWAVFileWriterImpl final : public CWAVFileWriter, public AllocatedObject {
 public:
  QVERRORCODE_TAG SetChannelCount(int) override { return QVERR_FILE_NOT_OPEN; }
  QVERRORCODE_TAG Write(const void*, unsigned long) override { return QVERR_FILE_NOT_OPEN; }

  QVERRORCODE_TAG WriteFile(CMediaAccessor* source, const char* path, bool replace) override {
    return NoThrow([&] { return WriteFile(source, ToWide(path).c_str(), replace); });
  }
  QVERRORCODE_TAG WriteFile(CMediaAccessor* source, const wchar_t* path, bool replace) override {
    if (source == nullptr) return QVERR_NO_SOURCE;
    if (path == nullptr || *path == L'\0') return QVERR_BAD_FILE_NAME;
    if (std::exchange(isBusy_, true)) return QVERR_ALREADY_OPEN;
    const QVERRORCODE_TAG result = NoThrow([&] { return WriteAll(*source, path, replace); });
    isBusy_ = false;
    return result;
  }

  QVERRORCODE_TAG SetOutputCoding(int coding) override {
    return isBusy_ ? QVERR_ALREADY_OPEN : output_.SetOutputCoding(coding);
  }

  unsigned long GetDescription(char* buffer, unsigned long capacity) const override {
    return CopyText(kDescription, buffer, capacity);
  }
  unsigned long GetDescription(wchar_t* buffer, unsigned long capacity) const override {
    return CopyText(kDescription, buffer, capacity);
  }

 private:
  QVERRORCODE_TAG WriteAll(CMediaAccessor& source, const wchar_t* path, bool replace);

  COutputWAVMediaFileImpl output_;  // closed between two files
  bool isBusy_ = false;
};

QVERRORCODE_TAG PullInto(COutputWAVMediaFileImpl& output, CMediaAccessor& source,
                         unsigned long channels) {
  for (;;) {
    const short* samples = nullptr;
    unsigned long frames = 0;
    QVERRORCODE_TAG result = source.ReadBlock(samples, frames);
    if (result != QVERR_OK || frames == 0) return result;
    if (source.GetChannelCount() != channels) return QVERR_UNSUPPORTED_CHANNELS;
    result = output.Write(samples, frames);
    if (result != QVERR_OK) return result;
  }
}

QVERRORCODE_TAG CWAVFileWriterImpl::WriteAll(CMediaAccessor& source, const wchar_t* path,
                                             bool replace) {
  const unsigned long frequency = source.GetSamplingFrequency();
  const unsigned long channels = source.GetChannelCount();
  if (!std::in_range<std::uint32_t>(frequency)) return QVERR_INVALID_ARGUMENT;
  if (!std::in_range<std::uint16_t>(channels)) return QVERR_UNSUPPORTED_CHANNELS;
  platform::PendingFile pending;
  output_.SetSamplingFrequency(static_cast<std::uint32_t>(frequency));
  output_.SetChannelCount(static_cast<std::uint16_t>(channels));
  // Nothing is created for what will be refused.
  QVERRORCODE_TAG result = output_.Check();
  if (result == QVERR_OK) result = pending.Create(path, replace);
  if (result == QVERR_OK) result = output_.Open(pending.Name().c_str(), true);
  if (result != QVERR_OK) return result;
  // A source may throw; the file has to be closed before it is deleted.
  result = NoThrow([&] { return PullInto(output_, source, channels); });
  if (result != QVERR_OK) {
    output_.Abandon();
    return result;
  }
  result = output_.Close();
  return result == QVERR_OK ? pending.Publish() : result;
}

}  // namespace

CWAVFileWriter::CWAVFileWriter() = default;
CWAVFileWriter::~CWAVFileWriter() = default;

CWAVFileWriter* CWAVFileWriter::CreateInstance() noexcept { return new CWAVFileWriterImpl; }

}  // namespace Quorvex
