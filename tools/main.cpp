// media-accessor: the library on the command line. This file parses the arguments, the commands do
// the work.
#include <MediaAccessor/library.h>

#include <CLI/CLI.hpp>
#include <exception>

#include "platform/console.h"
#include "tools/commands.h"
#include "tools/input.h"

namespace media_accessor_tool {
namespace {

constexpr const char* kReaderHelp = "Open with this reader alone, by its format name";

// Empty when the text is a channel number.
std::string CheckChannel(const std::string& text) {
  int channel = 0;
  const bool isNumber = CLI::detail::lexical_cast(text, channel);
  return isNumber && channel >= 0 ? "" : "channels are numbers from 0, not \"" + text + "\"";
}

std::string Version() {
  char text[64] = "";
  Quorvex::MediaAccessorGetLibraryVersion(text, sizeof text);
  return std::string("media-accessor ") + text;
}

void AddInfo(CLI::App& app, int& exitCode) {
  auto options = std::make_shared<InfoOptions>();
  CLI::App* command = app.add_subcommand("info", "Print the facts of media files");
  command->add_flag("--json", options->json, "Print a JSON array with one object a file");
  command->add_flag("--exact", options->exact, "Also count the length by decoding");
  command->add_option("--reader", options->reader, kReaderHelp)->type_name("NAME");
  command->add_option("FILE", options->files, "Media files")->required()->type_name("");
  command->callback([options, &exitCode] { exitCode = RunInfo(*options); });
}

void AddDecode(CLI::App& app, int& exitCode) {
  auto options = std::make_shared<DecodeOptions>();
  CLI::App* command = app.add_subcommand(
      "decode", "Write a file's audio as raw interleaved signed 16-bit little-endian samples");
  command->add_option("FILE", options->input, "Media file")->required()->type_name("");
  command->add_option("-o,--output", options->output, "Output file, - for standard output")
      ->required()
      ->type_name("OUT");
  command
      ->add_option("--channels", options->channels,
                   "Channels to use, from 0, such as 0,1 (default: all)")
      ->delimiter(',')
      ->allow_extra_args(false)  // else it would take FILE for one more channel
      ->check(CLI::Validator(CheckChannel, ""))
      ->type_name("LIST");
  command
      ->add_option("--mode", options->mode,
                   "average (default): one channel, the mean; sum: one channel, clipped;\n"
                   "separate: the channels kept apart, in the order of --channels; a full\n"
                   "selection keeps the file's order")
      ->check(CLI::IsMember({"average", "sum", "separate"}))
      ->type_name("MODE");
  command->add_option("--reader", options->reader, kReaderHelp)->type_name("NAME");
  command->callback([options, &exitCode] { exitCode = RunDecode(*options); });
}

void AddFormats(CLI::App& app, int& exitCode) {
  auto json = std::make_shared<bool>(false);
  CLI::App* command =
      app.add_subcommand("formats", "List file name extensions and the readers tried for each");
  command->add_flag("--json", *json, "Print a JSON array with one object an extension");
  command->callback([json, &exitCode] { exitCode = RunFormats(*json); });
}

int Run(int argc, char** argv) {
  CLI::App app("Reads the audio out of recorded media files.", "media-accessor");
  int exitCode = kAllWentWell;
  app.set_version_flag("--version", Version);
  app.require_subcommand(1);
  app.footer("Exit code: 0 all went well, 1 some file failed, 2 wrong usage.");
  AddInfo(app, exitCode);
  AddDecode(app, exitCode);
  AddFormats(app, exitCode);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kAllWentWell : kWrongUsage;
  }
  return exitCode;
}

}  // namespace
}  // namespace media_accessor_tool

int main(int argc, char** argv) {
  Quorvex::platform::ReportBrokenPipes();
  try {
    return media_accessor_tool::Run(argc, argv);
  } catch (const std::exception& error) {
    media_accessor_tool::ReportError("error", error.what());
    return media_accessor_tool::kSomeFileFailed;
  }
}
