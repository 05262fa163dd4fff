// info: the facts of files, as a table or as JSON.
#include <MediaAccessor/text.h>

#include <algorithm>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <optional>

#include "tools/commands.h"
#include "tools/input.h"
#include "tools/output.h"
#include "tools/table.h"
#include "tools/watched_file.h"

namespace media_accessor_tool {
namespace {

using namespace Quorvex;

struct FileFacts {
  std::string reader;
  std::string encoding;
  unsigned long samplingFrequency = 0;
  int channels = 0;
  unsigned long milliseconds = 0;
  std::optional<unsigned long long> exactMilliseconds;
};

QVERRORCODE_TAG GatherFacts(const std::string& path, const CMediaFileFactory* reader, bool exact,
                            FileFacts& facts) {
  MediaFilePtr file;
  QVERRORCODE_TAG result = OpenFile(path, reader, file);
  if (result != QVERR_OK) return result;
  facts.reader = TextOf<char>(
      [&](char* buffer, unsigned long capacity) { return file->GetDescription(buffer, capacity); });
  facts.encoding = TextOf<char>([&](char* buffer, unsigned long capacity) {
    return file->GetFormatDescription(buffer, capacity);
  });
  facts.samplingFrequency = file->GetSamplingFrequency();
  facts.channels = file->GetTrackChannelCount();
  facts.milliseconds = file->GetMilliseconds();
  if (exact) {
    WatchedFile watched(*file, path);
    const short* samples = nullptr;
    unsigned long frames = 0;
    do {
      result = watched.ReadBlock(samples, frames);
    } while (result == QVERR_OK && frames > 0);
    facts.exactMilliseconds = watched.Milliseconds();
  }
  return result;
}

std::string Duration(unsigned long long milliseconds) {
  char text[48];
  std::snprintf(text, sizeof text, "%llu:%02llu:%02llu.%03llu", milliseconds / 3'600'000,
                milliseconds / 60'000 % 60, milliseconds / 1000 % 60, milliseconds % 1000);
  return text;
}

// One JSON array, written as the files come.
class JsonReport {
 public:
  explicit JsonReport(Output& output) : output_(output) {}

  bool Add(const std::string& path, QVERRORCODE_TAG result, const FileFacts& facts) {
    nlohmann::ordered_json object;
    object["file"] = path;
    object["result"] = static_cast<int>(result);
    object["result_name"] = MediaAccessorGetResultName(result);
    if (result == QVERR_OK) {
      object["reader"] = facts.reader;
      object["encoding"] = facts.encoding;
      object["sampling_frequency"] = facts.samplingFrequency;
      object["channels"] = facts.channels;
      object["milliseconds"] = facts.milliseconds;
      if (facts.exactMilliseconds) object["exact_milliseconds"] = *facts.exactMilliseconds;
    }
    const char* const separator = isFirst_ ? "[\n" : ",\n";
    isFirst_ = false;
    return output_.Write(separator + ToText(object));
  }

  void Finish() { output_.Write(isFirst_ ? "[]\n" : "\n]\n"); }

 private:
  // File names may hold bytes that are not UTF-8, which JSON cannot.
  static std::string ToText(const nlohmann::ordered_json& object) {
    return object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
  }

  Output& output_;
  bool isFirst_ = true;
};

}  // namespace

int RunInfo(const InfoOptions& options) {
  const CMediaFileFactory* reader = nullptr;
  if (!FindReader(options.reader, reader)) return kWrongUsage;
  Output output;
  output.Open("-");
  JsonReport json(output);
  Table table({"FILE", "READER", "ENCODING", "HZ", "CHANNELS", "DURATION"});
  if (options.exact) table.AddColumn("EXACT");
  bool allOpened = true;
  for (const std::string& path : options.files) {
    FileFacts facts;
    const QVERRORCODE_TAG result = GatherFacts(path, reader, options.exact, facts);
    if (result != QVERR_OK) {
      ReportFailure(path, result);
      allOpened = false;
    }
    if (options.json) {
      if (!json.Add(path, result, facts)) break;
    } else if (result == QVERR_OK) {
      table.AddRow({Printable(path), facts.reader, facts.encoding,
                    std::to_string(facts.samplingFrequency), std::to_string(facts.channels),
                    Duration(facts.milliseconds),
                    facts.exactMilliseconds ? Duration(*facts.exactMilliseconds) : ""});
    }
  }
  if (options.json) {
    json.Finish();
  } else {
    output.Write(table.Text());
  }
  return output.Finish() && allOpened ? kAllWentWell : kSomeFileFailed;
}

}  // namespace media_accessor_tool
