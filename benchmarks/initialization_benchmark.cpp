// Initialisation of the library without a plug-in module, and how much of it is looking for one:
// the same search, and a plain reading of the same directory. Its size is printed, since it
// matters.
#include <MediaAccessor/library.h>
#include <MediaAccessor/registry.h>
#include <benchmark/benchmark.h>
#include <dirent.h>

#include <cstdio>
#include <string>

#include "benchmarks/comparison.h"
#include "platform/module.h"
#include "platform/text.h"

namespace {

unsigned long long Entries(const std::string& directory) {
  DIR* const stream = opendir(directory.c_str());
  if (stream == nullptr) return 0;
  unsigned long long entries = 0;
  while (readdir(stream) != nullptr) ++entries;
  closedir(stream);
  return entries;
}

}  // namespace

int main(int argc, char** argv) {
  using namespace Quorvex;
  const std::wstring wide = platform::OwnModuleDirectory();
  const std::string directory = platform::Narrow(wide);
  std::printf("%llu entries in the library's directory\n", Entries(directory));
  const std::string job = "initialise the library";
  benchmarks::Add(job, "ours", "time", [] {
    MediaAccessorRegistryClear();
    return InitializeMediaAccessorLibrary() == QVERR_OK ? 1ULL : 0ULL;
  });
  benchmarks::Add(job, "the search", "time", [wide] {
    benchmark::DoNotOptimize(platform::OwnModuleDirectory());
    constexpr std::wstring_view kNames[] = {L"OptMediaAccessor", L"*MediaAccessor.*"};
    return platform::FindModules(wide, kNames).empty() ? 1ULL : 0ULL;
  });
  benchmarks::Add(job, "readdir", "time",
                  [directory] { return Entries(directory) > 0 ? 1ULL : 0ULL; });
  return benchmarks::RunAll(argc, argv);
}
