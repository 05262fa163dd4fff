// decode: a file's audio as raw interleaved signed 16-bit little-endian samples.
#include <bit>
#include <filesystem>

#include "platform/console.h"
#include "tools/commands.h"
#include "tools/input.h"
#include "tools/output.h"

namespace media_accessor_tool {
namespace {

using namespace Quorvex;

static_assert(std::endian::native == std::endian::little, "samples are written as they stand");

QVERRORCODE_TAG SelectChannels(CMediaFile& file, const DecodeOptions& options) {
  if (options.channels.empty() && options.mode.empty()) return QVERR_OK;
  const int mode = options.mode == "separate" ? kChannelModeSeparate
                   : options.mode == "sum"    ? kChannelModeSum
                                              : kChannelModeAverage;
  return file.SelectChannels(options.channels.data(), static_cast<int>(options.channels.size()),
                             mode);
}

bool IsSameFile(const std::string& input, const std::string& output) {
  std::error_code error;
  return output != "-" &&
         std::filesystem::equivalent(Quorvex::platform::ArgumentPath(input),
                                     Quorvex::platform::ArgumentPath(output), error);
}

}  // namespace

int RunDecode(const DecodeOptions& options) {
  const CMediaFileFactory* reader = nullptr;
  if (!FindReader(options.reader, reader)) return kWrongUsage;
  if (IsSameFile(options.input, options.output)) {
    ReportError(options.output, "is the input file");
    return kWrongUsage;
  }
  MediaFilePtr file;
  QVERRORCODE_TAG result = OpenFile(options.input, reader, file);
  if (result == QVERR_OK) result = SelectChannels(*file, options);
  if (result != QVERR_OK) {
    ReportFailure(options.input, result);
    if (result == QVERR_UNSUPPORTED_CHANNELS) {
      ReportError(options.input,
                  "its channels are 0 to " + std::to_string(file->GetTrackChannelCount() - 1));
    }
    return kSomeFileFailed;
  }
  Output output;
  unsigned long long frames = 0;
  if (output.Open(options.output)) {
    result = PullAll(
        *file, options.input,
        [&output](const short* samples, std::size_t count) {
          return output.Write(samples, count * sizeof *samples);
        },
        frames);
  }
  if (result != QVERR_OK) {
    ReportFailure(options.input, result);
    ReportError(options.input, "stopped after " + std::to_string(frames) + " frames");
  }
  return output.Finish() && result == QVERR_OK ? kAllWentWell : kSomeFileFailed;
}

}  // namespace media_accessor_tool
