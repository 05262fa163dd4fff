// Finding and loading modules.
#include "platform/module.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "platform/text.h"
#include "tests/test_files.h"

namespace {

using namespace Quorvex;

TEST(Module, IsLoadedByItsFullPathAlone) {
  const tests::TemporaryDirectory directory;
  std::filesystem::create_directory(directory.File("directory" MEDIA_ACCESSOR_MODULE_SUFFIX));
  const std::wstring here = platform::Widen(directory.File(""));
  for (const std::wstring& path :
       {std::wstring(L"libc.so.6"), std::wstring(L"kernel32.dll"), std::wstring(L"./libc.so.6"),
        std::wstring(L"C:kernel32.dll"), here + L"libc.so.6", here + L"kernel32.dll",
        here + L"directory" + platform::Widen(MEDIA_ACCESSOR_MODULE_SUFFIX)}) {
    platform::Module module;
    std::wstring error;
    EXPECT_FALSE(module.Load(path, error)) << platform::Narrow(path);
    EXPECT_FALSE(error.empty());
    EXPECT_EQ(module.Find<void()>("malloc"), nullptr);
  }
}

TEST(Module, SearchesInTheOrderOfPatternsAndNames) {
  const tests::TemporaryDirectory directory;
  std::vector<std::string> names;
  for (char letter = 'a'; letter <= 't'; ++letter) {
    names.push_back(std::string("MediaAccessor.") + letter + MEDIA_ACCESSOR_MODULE_SUFFIX);
  }
  std::vector<std::string> expected = names;
  expected.insert(expected.begin(), "Opt" MEDIA_ACCESSOR_MODULE_SUFFIX);
  std::vector<std::string> created = expected;
  for (const char* other : {"MediaAccessor" MEDIA_ACCESSOR_MODULE_SUFFIX,
                            "MediaAccessor.x" MEDIA_ACCESSOR_MODULE_SUFFIX "-old",
                            "Opt.y" MEDIA_ACCESSOR_MODULE_SUFFIX, "MediaAccessor.z"}) {
    created.push_back(other);
  }
  std::shuffle(created.begin(), created.end(), std::mt19937(1));
  for (const std::string& name : created) tests::WriteBytes(directory.File(name), {});
  const std::wstring here = platform::Widen(directory.File(""));
  constexpr std::wstring_view kPatterns[] = {L"Opt", L"*MediaAccessor.*"};
  std::vector<std::string> found;
  for (const std::wstring& path : platform::FindModules(here, kPatterns)) {
    EXPECT_TRUE(path.starts_with(here));
    found.push_back(platform::Narrow(path.substr(here.size())));
  }
  EXPECT_EQ(found, expected);
  EXPECT_TRUE(platform::FindModules(here + L"missing/", kPatterns).empty());
}

}  // namespace
