// The library behind Opus files, which is loaded when one needs it. This program opens no other.
#include <MediaAccessor/ownership.h>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <string>

#include "tests/test_files.h"
#include "tests/test_system.h"

namespace {

using namespace Quorvex;

constexpr const char* kName = "libopusfile.so.0";

bool IsLoaded() {
  void* const module = ::dlopen(kName, RTLD_NOW | RTLD_NOLOAD);
  if (module != nullptr) ::dlclose(module);
  return module != nullptr;
}

TEST(OpusLibrary, IsLoadedByTheFirstFileThatNeedsIt) {
  MediaFilePtr file;
  EXPECT_EQ(MediaFileOpen(tests::Fixture("sox_pcm16_stereo.wav").c_str(), file), QVERR_OK);
  EXPECT_EQ(MediaFileOpen("nowhere.opus", file), QVERR_FILE_OPEN_FAILED);
  EXPECT_FALSE(IsLoaded());
  EXPECT_EQ(MediaFileOpen(tests::Fixture("opus_mono.opus").c_str(), file), QVERR_OK);
  EXPECT_TRUE(IsLoaded());
}

// Something else stands where it is looked for first.
TEST(OpusLibrary, WithoutItOpusFilesAreRefusedAndTheLogSaysWhy) {
  const tests::TemporaryDirectory directory;
  tests::WriteBytes(directory.File(kName), {});
  ASSERT_EQ(::setenv("LD_LIBRARY_PATH", directory.File("").c_str(), 1), 0);
  const std::string errors = directory.File("errors.txt");
  tests::Process program({MEDIA_ACCESSOR_PROGRAM, "--verbose", "info",
                          tests::Fixture("opus_mono.opus"), tests::Fixture("sox_pcm8_mono.wav")},
                         "", errors);
  EXPECT_EQ(program.Wait(), 1);
  ::unsetenv("LD_LIBRARY_PATH");
  const tests::Bytes bytes = tests::ReadBytes(errors);
  const std::string text(bytes.begin(), bytes.end());
  EXPECT_NE(text.find("Opus files cannot be read: "), std::string::npos) << text;
  EXPECT_NE(text.find(std::string(kName) + ": file too short"), std::string::npos) << text;
  EXPECT_NE(text.find("Opus media format: 605 QVERR_BAD_FORMAT"), std::string::npos) << text;
  EXPECT_NE(text.find("Portable WAV Format: 0 QVERR_OK"), std::string::npos) << text;
}

}  // namespace
