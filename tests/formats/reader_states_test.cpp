// What every reader does before, between and after the files that it reads.
#include <MediaAccessor/all.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <ostream>
#include <string>

#include "tests/fake_media.h"
#include "tests/test_files.h"
#include "tests/test_system.h"

namespace {

using namespace Quorvex;

struct ReaderCase {
  const char* extension;
  const char* file;
  const char* refusedFile;  // null: the reader takes anything
  QVERRORCODE_TAG refusal;
  QVERRORCODE_TAG unreadable;  // when opening has to read
  QVERRORCODE_TAG missing = QVERR_FILE_OPEN_FAILED;
  const CMediaFileFactory* factory = nullptr;  // null: the first one of the extension
};

void PrintTo(const ReaderCase& c, std::ostream* stream) { *stream << c.extension; }

class ReaderStates : public testing::TestWithParam<ReaderCase> {
 protected:
  void SetUp() override {
    const CMediaFileFactory* factory = c.factory;
    bool isDefault = false;
    if (factory == nullptr) {
      ASSERT_EQ(MediaAccessorRegistryGetFactory(c.extension, 0, factory, isDefault), QVERR_OK);
    }
    file.reset(factory->CreateMediaFile());
  }

  QVERRORCODE_TAG Open(const std::string& name) { return file->Open(tests::Fixture(name).c_str()); }
  QVERRORCODE_TAG OpenRecording() {
    return file->Open((std::string(MEDIA_ACCESSOR_RECORDINGS) + "/call." + c.extension).c_str());
  }

  QVERRORCODE_TAG Read() {
    const short* samples = nullptr;
    const QVERRORCODE_TAG result = file->ReadBlock(samples, frames);
    EXPECT_EQ(samples != nullptr, frames > 0);
    return result;
  }

  void ExpectClosed() {
    EXPECT_FALSE(file->IsOpen());
    EXPECT_EQ(Read(), QVERR_FILE_NOT_OPEN);
    EXPECT_EQ(file->Close(), QVERR_FILE_NOT_OPEN);
    EXPECT_EQ(file->GetSamplingFrequency(), 0U);
    EXPECT_EQ(file->GetTrackChannelCount(), 0);
    EXPECT_EQ(file->GetMilliseconds(), 0U);
    char text[64];
    file->GetFormatDescription(text, sizeof text);
    EXPECT_STREQ(text, "File not open");
  }

  const ReaderCase& c = GetParam();
  MediaFilePtr file;
  unsigned long frames = 0;
};

TEST_P(ReaderStates, ClosedOpenAndClosedAgain) {
  ExpectClosed();
  ASSERT_EQ(Open(c.file), QVERR_OK);
  const unsigned long milliseconds = file->GetMilliseconds();
  EXPECT_EQ(OpenRecording(), QVERR_ALREADY_OPEN);
  EXPECT_EQ(file->GetMilliseconds(), milliseconds) << "the first file stays";
  file->SelectChannels(nullptr, 0, kChannelModeSeparate);
  const auto samples = tests::PullAll(*file);
  EXPECT_GT(samples.size(), 0U);
  EXPECT_EQ(Read(), QVERR_OK) << "the end stays the end";
  EXPECT_EQ(frames, 0U);
  EXPECT_EQ(file->Close(), QVERR_OK);
  ExpectClosed();
  ASSERT_EQ(OpenRecording(), QVERR_OK);
  EXPECT_NE(file->GetMilliseconds(), milliseconds);
  EXPECT_EQ(Read(), QVERR_OK);
  EXPECT_EQ(file->Close(), QVERR_OK);
  // The first once more, from its first sample, whatever was left of it the time before.
  ASSERT_EQ(Open(c.file), QVERR_OK);
  EXPECT_EQ(Read(), QVERR_OK);
  EXPECT_EQ(file->Close(), QVERR_OK);
  ASSERT_EQ(Open(c.file), QVERR_OK);
  file->SelectChannels(nullptr, 0, kChannelModeSeparate);
  EXPECT_EQ(tests::PullAll(*file), samples);
}

TEST_P(ReaderStates, NoFileIsHeldAfterARefusalOrAClose) {
  // Nobody else may have them open.
  const tests::TemporaryDirectory directory;
  const std::string good = directory.File(std::string("good.") + c.extension);
  const std::string bad = directory.File(std::string("bad.") + c.extension);
  std::filesystem::copy(tests::Fixture(c.file), good);
  ASSERT_EQ(file->Open(good.c_str()), QVERR_OK);
  EXPECT_TRUE(tests::IsHeld(good));
  ASSERT_EQ(file->Close(), QVERR_OK);
  EXPECT_FALSE(tests::IsHeld(good));
  if (c.refusedFile != nullptr) {
    std::filesystem::copy(tests::Fixture(c.refusedFile), bad);
    EXPECT_EQ(file->Open(bad.c_str()), c.refusal);
    EXPECT_FALSE(tests::IsHeld(bad));
  }
  EXPECT_EQ(Open("no such file"), c.missing);
  EXPECT_EQ(file->Open(directory.File("").c_str()), QVERR_FILE_OPEN_FAILED) << "a directory";
  ExpectClosed();
}

TEST_P(ReaderStates, AFileThatCannotBeRead) {
  if (tests::kUnreadableFile == nullptr) GTEST_SKIP() << "this system has no such file";
  EXPECT_EQ(file->Open(tests::kUnreadableFile), c.unreadable);
  if (c.unreadable == QVERR_OK) {
    EXPECT_EQ(Read(), QVERR_FILE_IO);
  }
}

INSTANTIATE_TEST_SUITE_P(
    All, ReaderStates,
    testing::Values(ReaderCase{"wav", "sox_pcm16_stereo.wav", "refused_aiff.wav", QVERR_BAD_FORMAT,
                               QVERR_BAD_FORMAT},
                    ReaderCase{"wav", "ffmpeg_ms_adpcm_stereo.wav", "refused_aiff.wav",
                               QVERR_BAD_FORMAT, QVERR_BAD_FORMAT, QVERR_FILE_NOT_FOUND,
                               &CInputWAVMediaFile::Factory()},
                    ReaderCase{"au", "au_sox_pcm16.au", "refused_aiff.wav", QVERR_BAD_FORMAT,
                               QVERR_FILE_OPEN_FAILED},
                    ReaderCase{"g722", "g722_ffmpeg.g722", "sox_pcm16_stereo.wav", QVERR_BAD_FORMAT,
                               QVERR_BAD_FORMAT},
                    // Its first block ends within a frame.
                    ReaderCase{"g722", "g723_1_mixed.wav", "sox_pcm16_stereo.wav", QVERR_BAD_FORMAT,
                               QVERR_BAD_FORMAT},
                    ReaderCase{"g729a", "g729a_bcg729.g729a", "sox_pcm16_stereo.wav",
                               QVERR_BAD_FORMAT, QVERR_BAD_FORMAT},
                    ReaderCase{"vox", "vox_sox.vox", nullptr, QVERR_OK, QVERR_OK},
                    ReaderCase{"opus", "opus_stereo.opus", "refused_aiff.wav",
                               QVERR_FILE_OPEN_FAILED, QVERR_FILE_OPEN_FAILED}),
    [](const auto& test) {
      std::string name = test.param.file;
      std::ranges::replace(name, '.', '_');
      return name;
    });

}  // namespace
