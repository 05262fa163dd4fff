// What the commands have in common about files.
#include "tools/input.h"

#include <MediaAccessor/input_wav_media_file.h>
#include <MediaAccessor/registry.h>
#include <MediaAccessor/text.h>

#include <cstdio>
#include <filesystem>
#include <vector>

#include "platform/console.h"
#include "tools/progress.h"

namespace media_accessor_tool {

using namespace Quorvex;

std::string FormatName(const CMediaFileFactory& factory) {
  return TextOf<char>([&](char* buffer, unsigned long capacity) {
    return factory.GetDescription(buffer, capacity);
  });
}

namespace {

QVERRORCODE_TAG SelectChannels(CMediaFile& file, const SourceOptions& options) {
  if (options.channels.empty() && options.mode.empty()) return QVERR_OK;
  const int mode = options.mode == "separate" ? kChannelModeSeparate
                   : options.mode == "sum"    ? kChannelModeSum
                                              : kChannelModeAverage;
  return file.SelectChannels(options.channels.data(), static_cast<int>(options.channels.size()),
                             mode);
}

bool IsSameFile(const std::string& input, const std::string& output) {
  std::error_code error;
  return output != "-" && std::filesystem::equivalent(platform::ArgumentPath(input),
                                                      platform::ArgumentPath(output), error);
}

}  // namespace

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

int OpenSource(const SourceOptions& options, const std::string& output, MediaFilePtr& file) {
  const CMediaFileFactory* reader = nullptr;
  if (!FindReader(options.reader, reader)) return kWrongUsage;
  if (IsSameFile(options.input, output)) {
    ReportError(output, "is the input file");
    return kWrongUsage;
  }
  QVERRORCODE_TAG result = OpenFile(options.input, reader, file);
  if (result == QVERR_OK) result = SelectChannels(*file, options);
  if (result == QVERR_OK) return kAllWentWell;
  ReportFailure(options.input, result);
  if (result == QVERR_UNSUPPORTED_CHANNELS) {
    ReportError(options.input,
                "its channels are 0 to " + std::to_string(file->GetTrackChannelCount() - 1));
  }
  return kSomeFileFailed;
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
