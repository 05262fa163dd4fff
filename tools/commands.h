// The commands of media-accessor. Each returns the program's exit code.
#pragma once

#include <string>
#include <vector>

namespace media_accessor_tool {

enum ExitCode : int {
  kAllWentWell = 0,
  kSomeFileFailed = 1,  // also: the output could not be written
  kWrongUsage = 2,
};

struct InfoOptions {
  std::vector<std::string> files;
  std::string reader;  // a format name; empty: as the library chooses
  bool json = false;
  bool exact = false;  // count by decoding
};
int RunInfo(const InfoOptions& options);

/// The audio that a command takes.
struct SourceOptions {
  std::string input;
  std::string reader;
  std::vector<int> channels;  // empty: all
  std::string mode;           // "average", "sum" or "separate"; empty: as the library chooses
  int rate = 0;               // Hz of the output; 0: the file's own
};

struct DecodeOptions : SourceOptions {
  std::string output;  // "-": standard output
};
int RunDecode(const DecodeOptions& options);

struct ConvertOptions : SourceOptions {
  std::string output;
  std::string coding = "pcm";
  bool force = false;  // replace an existing file
};
int RunConvert(const ConvertOptions& options);

struct CodecOptions {
  std::string direction;  // "decode" or "encode"
  std::string codec;      // one of CodecNames()
  int bitRate = 0;        // bit/s; 0: the codec's
  std::string input;
  std::string output;  // "-": standard output
};
/// What speech codecs are called on the command line.
std::vector<std::string> CodecNames();
int RunCodec(const CodecOptions& options);

int RunFormats(bool json);

}  // namespace media_accessor_tool
