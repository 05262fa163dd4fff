// What the commands have in common about files.
#include "tools/input.h"

#include <MediaAccessor/registry.h>
#include <MediaAccessor/text.h>

#include <cstdio>

#include "tools/progress.h"

namespace media_accessor_tool {

using namespace Quorvex;

std::string FormatName(const CMediaFileFactory& factory) {
  return TextOf<char>([&](char* buffer, unsigned long capacity) {
    return factory.GetDescription(buffer, capacity);
  });
}

bool FindReader(const std::string& formatName, const CMediaFileFactory*& reader) {
  reader = nullptr;
  if (formatName.empty()) return true;
  std::string known;
  const unsigned long count = GetMediaFileFactoryCount();
  for (unsigned long index = 0; index < count; ++index) {
    if (GetMediaFileFactory(index, reader) != QVERR_OK) continue;
    const std::string name = FormatName(*reader);
    if (name == formatName) return true;
    known += (known.empty() ? "\"" : ", \"") + name + "\"";
  }
  ReportError("--reader", "no reader is called \"" + formatName + "\"; there are " + known);
  return false;
}

QVERRORCODE_TAG OpenFile(const std::string& path, const CMediaFileFactory* reader,
                         MediaFilePtr& file) {
  if (reader == nullptr) return MediaFileOpen(path.c_str(), file);
  file.reset(reader->CreateMediaFile());
  if (file == nullptr) return QVERR_CREATE_FAILED;
  const QVERRORCODE_TAG result = file->Open(path.c_str());
  if (result != QVERR_OK) file.reset();
  return result;
}

QVERRORCODE_TAG PullAll(CMediaFile& file, const std::string& name,
                        const std::function<bool(const short*, std::size_t)>& take,
                        unsigned long long& frames) {
  Progress progress(Printable(name), file.GetMilliseconds());
  const unsigned long frequency = file.GetSamplingFrequency();
  frames = 0;
  for (;;) {
    const short* samples = nullptr;
    unsigned long count = 0;
    const QVERRORCODE_TAG result = file.ReadBlock(samples, count);
    if (result != QVERR_OK || count == 0) return result;
    frames += count;
    if (!take(samples, count * file.GetChannelCount())) return QVERR_OK;
    if (frequency > 0) progress.Show(frames * 1000 / frequency);
  }
}

void ReportFailure(const std::string& path, QVERRORCODE_TAG result) {
  ReportError(path, std::to_string(static_cast<int>(result)) + " " +
                        MediaAccessorGetResultName(result) + ": " +
                        MediaAccessorGetResultMeaning(result));
}

std::string Printable(const std::string& text) {
  std::string printable;
  for (const char character : text) {
    const auto code = static_cast<unsigned char>(character);
    if (code >= 0x20 && code != 0x7F) {
      printable += character;
    } else {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\x%02x", static_cast<unsigned>(code));
      printable += escape;
    }
  }
  return printable;
}

void ReportError(const std::string& subject, const std::string& text) {
  std::fprintf(stderr, "media-accessor: %s: %s\n", Printable(subject).c_str(), text.c_str());
}

}  // namespace media_accessor_tool
