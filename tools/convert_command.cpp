// convert: a file's audio into a WAV file.
#include <MediaAccessor/media_accessor_decorator.h>
#include <MediaAccessor/wav_file_writer.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <map>
#include <string>

#include "platform/console.h"
#include "tools/commands.h"
#include "tools/input.h"
#include "tools/output.h"
#include "tools/progress.h"

namespace media_accessor_tool {
namespace {

using namespace Quorvex;
using Clock = std::chrono::steady_clock;

const std::map<std::string, WAVOutputCoding> kCodings = {
    {"pcm", kWAVOutputPCM16},  {"alaw", kWAVOutputALaw},   {"mulaw", kWAVOutputMuLaw},
    {"gsm", kWAVOutputGSM610}, {"g729a", kWAVOutputG729A}, {"truespeech", kWAVOutputTrueSpeech}};

// Passes a file's blocks on, shows how far it is, and ends early on an interrupt.
class WatchedFile final : public CMediaAccessorDecorator {
 public:
  WatchedFile(CMediaFile& file, const std::string& name)
      : progress_(Printable(name), file.GetMilliseconds()) {
    SetSource(&file);
  }

  QVERRORCODE_TAG SetSource(CMediaAccessor* source) override { return AttachSource(source); }

  QVERRORCODE_TAG ReadBlock(const short*& samples, unsigned long& frames, void* context) override {
    result_ = GetSource()->ReadBlock(samples, frames, context);
    if (result_ != QVERR_OK) return result_;
    frames_ += frames;
    progress_.Show(Milliseconds());
    return platform::IsInterrupted() ? QVERR_BAD_STATE : QVERR_OK;
  }

  using CMediaAccessor::GetDescription;
  unsigned long GetDescription(wchar_t* buffer, unsigned long capacity) const override {
    return GetSource()->GetDescription(buffer, capacity);
  }

  unsigned long long Milliseconds() const {
    const unsigned long frequency = GetSamplingFrequency();
    return frequency > 0 ? frames_ * 1000 / frequency : 0;
  }
  /// Of the last block.
  QVERRORCODE_TAG Result() const { return result_; }

 private:
  Progress progress_;
  unsigned long long frames_ = 0;
  QVERRORCODE_TAG result_ = QVERR_OK;
};

bool Refuse(const std::string& output, const char* why) {
  ReportError(output, why);
  return false;
}

bool IsAllowed(const ConvertOptions& options) {
  if (options.output == "-") {
    return Refuse("standard output", "a WAV file needs a name; decode writes to standard output");
  }
  std::error_code error;
  const std::filesystem::path path = platform::ArgumentPath(options.output);
  if (!std::filesystem::exists(path, error)) return true;
  if (!std::filesystem::is_regular_file(path, error)) {
    return Refuse(options.output, "is not a regular file");
  }
  return options.force || Refuse(options.output, "exists; --force replaces it");
}

void ReportWriting(const ConvertOptions& options, QVERRORCODE_TAG result, unsigned long channels) {
  if (result != QVERR_BAD_FORMAT) {
    ReportFailure(options.output, result);
  } else {
    ReportError(options.output, "--coding " + options.coding + " is not written here for " +
                                    std::to_string(channels) + " channel(s); --verbose tells more");
  }
}

bool ReportConverted(const std::string& name, double audio, double taken) {
  char times[64];
  std::snprintf(times, sizeof times, ": %.3f s of audio, %.0f x real time\n", audio,
                taken > 0 ? audio / taken : 0);
  Output output;
  output.Open("-");
  output.Write(Printable(name) + times);
  return output.Finish();
}

}  // namespace

int RunConvert(const ConvertOptions& options) {
  const Clock::time_point start = Clock::now();
  MediaFilePtr file;
  const int opened = OpenSource(options, options.output, file);
  if (opened != kAllWentWell) return opened;
  if (!IsAllowed(options)) return kWrongUsage;
  const WAVFileWriterPtr writer(CWAVFileWriter::CreateInstance());
  QVERRORCODE_TAG result = writer->SetOutputCoding(kCodings.at(options.coding));
  if (result != QVERR_OK) {
    ReportFailure("--coding " + options.coding, result);
    return kSomeFileFailed;
  }
  platform::CatchInterrupts();
  double seconds = 0;
  {
    WatchedFile source(*file, options.input);
    result = writer->WriteFile(&source, options.output.c_str(), options.force);
    seconds = static_cast<double>(source.Milliseconds()) / 1000;
    if (source.Result() != QVERR_OK) {
      ReportFailure(options.input, result);
    } else if (result != QVERR_OK && !platform::IsInterrupted()) {
      ReportWriting(options, result, source.GetChannelCount());
    }
  }
  if (platform::IsInterrupted()) platform::EndInterrupted();
  if (result != QVERR_OK) return kSomeFileFailed;
  const std::chrono::duration<double> taken = Clock::now() - start;
  return ReportConverted(options.output, seconds, taken.count()) ? kAllWentWell : kSomeFileFailed;
}

}  // namespace media_accessor_tool
