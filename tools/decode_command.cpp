// decode: a file's audio as raw interleaved signed 16-bit little-endian samples.
#include <bit>

#include "tools/commands.h"
#include "tools/input.h"
#include "tools/output.h"

namespace media_accessor_tool {
namespace {

using namespace Quorvex;

static_assert(std::endian::native == std::endian::little, "samples are written as they stand");

}  // namespace

int RunDecode(const DecodeOptions& options) {
  MediaFilePtr file;
  const int opened = OpenSource(options, options.output, file);
  if (opened != kAllWentWell) return opened;
  Output output;
  unsigned long long frames = 0;
  QVERRORCODE_TAG result = QVERR_OK;
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
