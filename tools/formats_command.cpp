// formats: the registered extensions and what is tried for each.
#include <MediaAccessor/registry.h>
#include <MediaAccessor/text.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tools/commands.h"
#include "tools/input.h"
#include "tools/output.h"
#include "tools/table.h"

namespace media_accessor_tool {
namespace {

using namespace Quorvex;

std::vector<std::string> Candidates(const std::string& extension) {
  std::vector<std::string> names;
  const CMediaFileFactory* factory = nullptr;
  bool isDefault = false;
  for (unsigned long index = 0;
       MediaAccessorRegistryGetFactory(extension.c_str(), index, factory, isDefault) == QVERR_OK;
       ++index) {
    names.push_back(FormatName(*factory));
  }
  return names;
}

}  // namespace

int RunFormats(bool json) {
  RegisterWAVReader();
  auto list = nlohmann::ordered_json::array();
  Table table({"EXTENSION", "CANDIDATES"});
  const unsigned long count = MediaAccessorRegistryGetExtensionCount();
  for (unsigned long index = 0; index < count; ++index) {
    const std::string extension = TextOf<char>([&](char* buffer, unsigned long capacity) {
      return MediaAccessorRegistryGetExtension(index, buffer, capacity);
    });
    const std::vector<std::string> candidates = Candidates(extension);
    list.push_back({{"extension", extension}, {"candidates", candidates}});
    std::string joined;
    for (const std::string& name : candidates) joined += (joined.empty() ? "" : ", ") + name;
    table.AddRow({extension, joined});
  }
  Output output;
  output.Open("-");
  output.Write(json ? list.dump(2) + "\n" : table.Text());
  return output.Finish() ? kAllWentWell : kSomeFileFailed;
}

}  // namespace media_accessor_tool
