// media-accessor: the library on the command line. This file parses the arguments, the commands do
// the work.
#include <MediaAccessor/library.h>
#include <MediaAccessor/log.h>
#include <MediaAccessor/vox_media_file.h>

#include <CLI/CLI.hpp>
#include <charconv>
#include <cstdio>
#include <exception>
#include <limits>
#include <sstream>
#include <string_view>

#include "platform/console.h"
#include "tools/commands.h"
#include "tools/input.h"
#include "tools/output.h"

namespace media_accessor_tool {
namespace {

// Channel numbers from 0, with a comma between two. False for anything else.
bool ParseChannels(std::string_view text, std::vector<int>& channels) {
  channels.clear();
  for (;;) {
    int channel = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), channel);
    if (error != std::errc() || channel < 0) return false;
    channels.push_back(channel);
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    if (text.empty()) return true;
    if (text.front() != ',') return false;
    text.remove_prefix(1);
  }
}

std::string CheckReader(const std::string& name) {
  return name.empty() ? "a reader has a name" : "";
}

std::string Version() {
  char text[64] = "";
  Quorvex::MediaAccessorGetLibraryVersion(text, sizeof text);
  return std::string("media-accessor ") + text;
}

// @param what  such as "a bit rate is a number of bits a second".
int ParsePositive(const std::string& option, const std::string& what, const std::string& text) {
  int number = 0;
  const char* const end = text.data() + text.size();
  const auto [parsed, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || parsed != end || number < 1) {
    throw CLI::ValidationError(option, what + " from 1 to " +
                                           std::to_string(std::numeric_limits<int>::max()) +
                                           ", not \"" + Printable(text) + "\"");
  }
  return number;
}

int ParseHertz(const std::string& option, const std::string& text) {
  return ParsePositive(option, "a sampling frequency is a number of hertz", text);
}

// A .vox file does not tell its frequency.
void SetVoxRate(const std::string& text) {
  Quorvex::CVOXMediaFile::SetDefaultSamplingFrequency(
      static_cast<unsigned long>(ParseHertz("--vox-rate", text)));
}

void LogToStandardError() { Quorvex::MediaAccessorSetLog("", Quorvex::kLogStandardError); }

void AddReader(CLI::App& command, std::string& reader) {
  command.add_option("--reader", reader, "Open with this reader alone, by its format name")
      ->check(CLI::Validator(CheckReader, ""))
      ->type_name("NAME");
}

void AddInfo(CLI::App& app, int& exitCode) {
  auto options = std::make_shared<InfoOptions>();
  CLI::App* command = app.add_subcommand("info", "Print the facts of media files");
  command->add_flag("--json", options->json, "Print a JSON array with one object a file");
  command->add_flag("--exact", options->exact, "Also count the length by decoding");
  AddReader(*command, options->reader);
  command->add_option("FILE", options->files, "Media files")->required()->type_name("");
  command->callback([options, &exitCode] { exitCode = RunInfo(*options); });
}

// The options must live as long as the command.
void AddSource(CLI::App& command, SourceOptions& options) {
  command
      .add_option_function<std::string>(
          "--channels",
          [&options](const std::string& text) {
            if (!ParseChannels(text, options.channels)) {
              throw CLI::ValidationError(
                  "--channels",
                  "channels are numbers from 0, such as 0,1, not \"" + Printable(text) + "\"");
            }
          },
          "Channels to use, from 0, such as 0,1 (default: all)")
      ->type_name("LIST");
  command
      .add_option("--mode", options.mode,
                  "average (default): one channel, the mean; sum: one channel, clipped;\n"
                  "separate: the channels kept apart, in the order of --channels; a full\n"
                  "selection keeps the file's order")
      ->check(CLI::IsMember({"average", "sum", "separate"}))
      ->type_name("MODE");
  command
      .add_option_function<std::string>(
          "--rate",
          [&options](const std::string& text) { options.rate = ParseHertz("--rate", text); },
          "Resample to this sampling frequency; at the file's own, the default,\n"
          "the samples stay as they are")
      ->type_name("HZ");
  AddReader(command, options.reader);
}

void AddDecode(CLI::App& app, int& exitCode) {
  auto options = std::make_shared<DecodeOptions>();
  CLI::App* command = app.add_subcommand(
      "decode", "Write a file's audio as raw interleaved signed 16-bit little-endian samples");
  command->add_option("FILE", options->input, "Media file")->required()->type_name("");
  command->add_option("-o,--output", options->output, "Output file, - for standard output")
      ->required()
      ->type_name("OUT");
  AddSource(*command, *options);
  command->callback([options, &exitCode] { exitCode = RunDecode(*options); });
}

void AddConvert(CLI::App& app, int& exitCode) {
  auto options = std::make_shared<ConvertOptions>();
  CLI::App* command = app.add_subcommand("convert", "Write a file's audio into a WAV file");
  command->add_option("IN", options->input, "Media file")->required()->type_name("");
  command->add_option("OUT", options->output, "WAV file, which appears whole or not at all")
      ->required()
      ->type_name("");
  AddSource(*command, *options);
  command
      ->add_option("--coding", options->coding,
                   "pcm (default): 16-bit; alaw; mulaw; gsm: GSM 6.10, mono; g729a: mono or\n"
                   "stereo, always 8000 Hz; truespeech: G.723.1, mono, always 8000 Hz")
      ->check(CLI::IsMember({"pcm", "alaw", "mulaw", "gsm", "g729a", "truespeech"}))
      ->type_name("CODING");
  command->add_flag("--force", options->force, "Replace OUT if it exists");
  command->callback([options, &exitCode] { exitCode = RunConvert(*options); });
}

void AddCodec(CLI::App& app, int& exitCode) {
  auto options = std::make_shared<CodecOptions>();
  CLI::App* command = app.add_subcommand(
      "codec",
      "Decode the bare frames of a speech codec to raw signed 16-bit little-endian\n"
      "samples, or encode such samples");
  command->add_option("DIRECTION", options->direction, "decode or encode")
      ->required()
      ->check(CLI::IsMember({"decode", "encode"}))
      ->type_name("");
  command->add_option("IN", options->input, "Frames, or mono samples at the codec's frequency")
      ->required()
      ->type_name("");
  command->add_option("-o,--output", options->output, "Output file, - for standard output")
      ->required()
      ->type_name("OUT");
  command
      ->add_option("--codec", options->codec,
                   "g729a; g729a-headered: a byte before each frame; g723-53, g723-63: G.723.1\n"
                   "coded at 5.3 or 6.3 kbit/s, either decodes any of its frames; g722, g722-1:\n"
                   "decoded only")
      ->required()
      ->check(CLI::IsMember(CodecNames()))
      ->type_name("CODEC");
  command
      ->add_option_function<std::string>(
          "--bit-rate",
          [options = options.get()](const std::string& text) {
            options->bitRate =
                ParsePositive("--bit-rate", "a bit rate is a number of bits a second", text);
          },
          "g722: 64000 (default), 56000 or 48000; g722-1: 24000 or 32000")
      ->type_name("N");
  command->callback([options, &exitCode] { exitCode = RunCodec(*options); });
}

void AddFormats(CLI::App& app, int& exitCode) {
  auto json = std::make_shared<bool>(false);
  CLI::App* command =
      app.add_subcommand("formats", "List file name extensions and the readers tried for each");
  command->add_flag("--json", *json, "Print a JSON array with one object an extension");
  command->callback([json, &exitCode] { exitCode = RunFormats(*json); });
}

// Help and the version are errors too, to the parser: their text goes to standard output.
int PrintParseResult(CLI::App& app, const CLI::ParseError& error) {
  std::ostringstream out;
  std::ostringstream err;
  const bool isUsageError = app.exit(error, out, err) != 0;
  std::fputs(err.str().c_str(), stderr);
  if (isUsageError) return kWrongUsage;
  Output output;
  output.Open("-");
  output.Write(out.str());
  return output.Finish() ? kAllWentWell : kSomeFileFailed;
}

int Run(int argc, char** argv) {
  CLI::App app("Reads the audio out of recorded media files.", "media-accessor");
  int exitCode = kAllWentWell;
  app.set_version_flag("--version", Version);
  app.require_subcommand(1);
  app.fallthrough();
  app.allow_windows_style_options(false);  // "/recordings/x.wav" is a file
  app.add_flag_callback("--verbose", LogToStandardError,
                        "Tell on standard error which formats are tried, and which plug-in\n"
                        "modules were found");
  app.add_option_function<std::string>(
         "--vox-rate", SetVoxRate,
         "Sampling frequency of .vox files, which do not tell it (default: 6000)")
      ->type_name("HZ");
  app.footer(
      "The options of media-accessor itself may also stand after a command.\n"
      "Exit code: 0 all went well, 1 some file failed, 2 wrong usage.");
  AddInfo(app, exitCode);
  AddDecode(app, exitCode);
  AddConvert(app, exitCode);
  AddCodec(app, exitCode);
  AddFormats(app, exitCode);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return PrintParseResult(app, error);
  }
  return exitCode;
}

}  // namespace
}  // namespace media_accessor_tool

int main(int argc, char** argv) {
  Quorvex::platform::PrepareProgram();
  try {
    return media_accessor_tool::Run(argc, argv);
  } catch (const std::exception& error) {
    media_accessor_tool::ReportError("error", error.what());
    return media_accessor_tool::kSomeFileFailed;
  }
}
