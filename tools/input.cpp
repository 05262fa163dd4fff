// What the commands have in common about files.
#include "tools/input.h"

#include <MediaAccessor/input_wav_media_file.h>
#include <MediaAccessor/registry.h>
#include <MediaAccessor/text.h>

#include <cstdio>
#include <filesystem>
#include <vector>

#include "platform/console.h"

namespace media_accessor_tool {

using namespace Quorvex;

std::string FormatName(const CMediaFileFactory& factory) {
  return TextOf<char>([&](char* buffer, unsigned long capacity) {
    return factory.GetDescription(buffer, capacity);
  });
}

void RegisterWAVReader() {
  const CMediaFileFactory* const wav = &CInputWAVMediaFile::Factory();
  std::vector<const CMediaFileFactory*> others;
  const CMediaFileFactory* factory = nullptr;
  bool isDefault = false;
  while (MediaAccessorRegistryGetFactory("wav", static_cast<unsigned long>(others.size()), factory,
                                         isDefault) == QVERR_OK &&
         !isDefault) {
    if (factory == wav) return;
    others.push_back(factory);
  }
  // What is added comes first, so the others are put before it again.
  MediaAccessorRegistryAdd(wav);
  for (auto other = others.rbegin(); other != others.rend(); ++other) {
    MediaAccessorRegistryOverride("wav", *other);
  }
}

bool FindReader(const std::string& formatName, const CMediaFileFactory*& reader) {
  RegisterWAVReader();
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

bool IsSameFile(const std::string& input, const std::string& output) {
  std::error_code error;
  if (output == "-" || !std::filesystem::equivalent(platform::ArgumentPath(input),
                                                    platform::ArgumentPath(output), error)) {
    return false;
  }
  ReportError(output, "is the input file");
  return true;
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
