// decode: a file's audio as raw interleaved signed 16-bit little-endian samples.
#include <bit>

#include "tools/commands.h"
#include "tools/input.h"
#include "tools/output.h"
#include "tools/source.h"

namespace media_accessor_tool {
namespace {

using namespace Quorvex;

static_assert(std::endian::native == std::endian::little, "samples are written as they stand");

}  // namespace

int RunDecode(const DecodeOptions& options) {
  Source source;
  const int opened = source.Open(options, options.output);
  if (opened != kAllWentWell) return opened;
  CMediaAccessor& audio = source.Audio();
  Output output;
  unsigned long long written = 0;
  const short* samples = nullptr;
  unsigned long frames = 0;
  QVERRORCODE_TAG result = audio.ReadBlock(samples, frames);
  // Not before, so that audio that fails at once leaves an earlier output as it was.
  if (result == QVERR_OK) output.Open(options.output);
  while (result == QVERR_OK && frames > 0 &&
         output.Write(samples, frames * audio.GetChannelCount() * sizeof *samples)) {
    written += frames;
    result = audio.ReadBlock(samples, frames);
  }
  source.EndProgress();
  if (result != QVERR_OK) {
    if (!source.Explain(result)) ReportFailure(options.input, result);
    if (written > 0) {
      ReportError(options.input, "stopped after " + std::to_string(written) + " frames");
    }
  }
  return output.Finish() && result == QVERR_OK ? kAllWentWell : kSomeFileFailed;
}

}  // namespace media_accessor_tool
