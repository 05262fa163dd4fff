// The module behind FFmpeg's codings, which is loaded when a format needs it. It is looked for
// beside this program, which has a directory to itself.
#include <MediaAccessor/log.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "compression/posix/ffmpeg_driver.h"
#include "tests/test_files.h"

namespace {

using namespace Quorvex;
namespace fs = std::filesystem;

Suggestion AskForGSM(std::string& logged) {
  const WaveFormat source = {.tag = kWaveTagGSM610,
                             .channels = 1,
                             .samplesPerSecond = 8000,
                             .averageBytesPerSecond = 1625,
                             .blockAlign = 65,
                             .extra = {0x40, 0x01}};
  WaveFormat target = PCM16Format(1, 8000);
  testing::internal::CaptureStderr();
  const Suggestion suggestion = FFmpegDriver().Suggest(source, target, kSuggestTag);
  logged = testing::internal::GetCapturedStderr();
  return suggestion;
}

TEST(FFmpegModule, IsUsedAsSoonAsItIsThereAndUntilThenTheLogSaysWhyNot) {
  const fs::path module =
      fs::read_symlink("/proc/self/exe").parent_path() / "MediaAccessorFFmpeg.so";
  const auto place = [&](const fs::path& file) {
    fs::remove(module);
    if (!file.empty()) fs::copy_file(file, module);
  };
  struct {
    fs::path file;
    std::string reason;
  } const cases[] = {{"", "No such file"},
                     {tests::Fixture("ffmpeg_gsm610.wav"), "ELF header"},
                     {MEDIA_ACCESSOR_OTHER_MODULE, "another version"}};
  ASSERT_EQ(MediaAccessorSetLog("", kLogStandardError), QVERR_OK);
  std::string logged;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.reason);
    place(c.file);
    EXPECT_EQ(AskForGSM(logged), Suggestion::kFailed);
    EXPECT_NE(logged.find(module.string()), std::string::npos) << logged;
    EXPECT_NE(logged.find(c.reason), std::string::npos) << logged;
  }
  place(MEDIA_ACCESSOR_FFMPEG_MODULE);
  EXPECT_EQ(AskForGSM(logged), Suggestion::kMade);
  EXPECT_EQ(logged, "");
}

}  // namespace
