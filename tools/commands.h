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

struct DecodeOptions {
  std::string input;
  std::string output;  // "-": standard output
  std::string reader;
  std::vector<int> channels;  // empty: all
  std::string mode;           // "average", "sum" or "separate"; empty: as the library chooses
};
int RunDecode(const DecodeOptions& options);

int RunFormats(bool json);

}  // namespace media_accessor_tool
