// What is loaded by the first file that needs it and not before: the library behind Opus files, and
// the module for further codings of WAV files. The order of the tests in this program matters.
#include <MediaAccessor/input_wav_media_file.h>
#include <MediaAccessor/library.h>
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

bool IsLoaded(const char* name) {
  void* const module = ::dlopen(name, RTLD_NOW | RTLD_NOLOAD);
  if (module != nullptr) ::dlclose(module);
  return module != nullptr;
}

TEST(OnNeed, TheLibraryForOpus) {
  MediaFilePtr file;
  EXPECT_EQ(MediaFileOpen(tests::Fixture("sox_pcm16_stereo.wav").c_str(), file), QVERR_OK);
  EXPECT_EQ(MediaFileOpen("nowhere.opus", file), QVERR_FILE_OPEN_FAILED);
  EXPECT_FALSE(IsLoaded(kName));
  EXPECT_EQ(MediaFileOpen(tests::Fixture("opus_mono.opus").c_str(), file), QVERR_OK);
  EXPECT_TRUE(IsLoaded(kName));
}

TEST(OnNeed, TheModuleForFurtherCodings) {
  EXPECT_EQ(InitializeMediaAccessorLibrary(), QVERR_OK);
  MediaFilePtr file;
  for (const char* name : {"sox_pcm16_stereo.wav", "sndfile_pcm24_stereo.wav",
                           "ffmpeg_float32_stereo.wav", "sox_ima_stereo.wav"}) {
    EXPECT_EQ(MediaFileOpen(tests::Fixture(name).c_str(), file), QVERR_OK);
  }
  const MediaFilePtr engine(CInputWAVMediaFile::CreateInstance());
  EXPECT_EQ(engine->Open(tests::Fixture("sox_pcm16_stereo.wav").c_str()), QVERR_OK);
  EXPECT_FALSE(IsLoaded(MEDIA_ACCESSOR_FFMPEG_MODULE));
  EXPECT_FALSE(IsLoaded("libavcodec.so.59"));
  EXPECT_EQ(MediaFileOpen(tests::Fixture("sox_gsm_mono.wav").c_str(), file), QVERR_OK);
  EXPECT_TRUE(IsLoaded(MEDIA_ACCESSOR_FFMPEG_MODULE));
}

// Something else stands where it is looked for first.
TEST(OnNeed, WithoutItOpusFilesAreRefusedAndTheLogSaysWhy) {
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
