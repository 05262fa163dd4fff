// convert: a file's audio into a WAV file.
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
#include "tools/source.h"

namespace media_accessor_tool {
namespace {

using namespace Quorvex;
using Clock = std::chrono::steady_clock;

const std::map<std::string, WAVOutputCoding> kCodings = {
    {"pcm", kWAVOutputPCM16},  {"alaw", kWAVOutputALaw},   {"mulaw", kWAVOutputMuLaw},
    {"gsm", kWAVOutputGSM610}, {"g729a", kWAVOutputG729A}, {"truespeech", kWAVOutputTrueSpeech}};

constexpr int kSpeechFrequency = 8000;  // Hz

bool Refuse(const std::string& output, const std::string& why) {
  ReportError(output, why);
  return false;
}

bool IsAllowed(const ConvertOptions& options) {
  const bool isSpeech = options.coding == "g729a" || options.coding == "truespeech";
  if (isSpeech && options.rate != 0 && options.rate != kSpeechFrequency) {
    return Refuse("--rate " + std::to_string(options.rate),
                  "--coding " + options.coding + " is always 8000 Hz");
  }
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

void ReportWriting(const ConvertOptions& options, QVERRORCODE_TAG result,
                   const CMediaAccessor& audio) {
  const bool isNotWritten = result == QVERR_BAD_FORMAT || result == QVERR_BAD_STATE ||
                            result == QVERR_UNSUPPORTED_CHANNELS;
  if (!isNotWritten) {
    ReportFailure(options.output, result);
  } else {
    ReportError(options.output, "--coding " + options.coding + " is not written here for " +
                                    std::to_string(audio.GetChannelCount()) + " channel(s) at " +
                                    std::to_string(audio.GetSamplingFrequency()) +
                                    " Hz; --verbose tells more");
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
  Source source;
  const int opened = source.Open(options, options.output);
  if (opened != kAllWentWell) return opened;
  if (!IsAllowed(options)) return kWrongUsage;
  const WAVFileWriterPtr writer(CWAVFileWriter::CreateInstance());
  QVERRORCODE_TAG result = writer->SetOutputCoding(kCodings.at(options.coding));
  if (result != QVERR_OK) {
    ReportFailure("--coding " + options.coding, result);
    return kSomeFileFailed;
  }
  platform::CatchInterrupts();
  result = writer->WriteFile(&source.Audio(), options.output.c_str(), options.force);
  source.EndProgress();
  if (platform::IsInterrupted()) platform::EndInterrupted();
  if (result != QVERR_OK) {
    if (!source.Explain(result)) ReportWriting(options, result, source.Audio());
    return kSomeFileFailed;
  }
  const double seconds = static_cast<double>(source.Milliseconds()) / 1000;
  const std::chrono::duration<double> taken = Clock::now() - start;
  return ReportConverted(options.output, seconds, taken.count()) ? kAllWentWell : kSomeFileFailed;
}

}  // namespace media_accessor_tool
