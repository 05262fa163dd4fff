// Opening files by name, and the one-shot questions.
#include <MediaAccessor/all.h>
#include <gtest/gtest.h>

#include "tests/fake_media.h"
#include "tests/test_files.h"

namespace {

using namespace Quorvex;
using tests::FakeFactory;

class MediaFileFunctions : public testing::Test {
 protected:
  void SetUp() override {
    MediaAccessorRegistryClear();
    // The second is tried first.
    MediaAccessorRegistryAdd(&second);
    MediaAccessorRegistryAdd(&first);
  }
  void TearDown() override {
    EXPECT_EQ(first.format.alive + second.format.alive, 0) << "a file object was left behind";
    MediaAccessorRegistryClear();
  }

  QVERRORCODE_TAG Open(const char* path, bool refuseFlagged = false) {
    return MediaFileOpen(path, file, refuseFlagged);
  }

  FakeFactory first{{L"fake"}};
  FakeFactory second{{L"fake"}};
  MediaFilePtr file;
};

TEST_F(MediaFileFunctions, OnlyBadFormatGoesOnToTheNextCandidate) {
  first.format.openResult = QVERR_BAD_FORMAT;
  EXPECT_EQ(Open("x.FAKE"), QVERR_OK);
  EXPECT_EQ(second.format.opened, 1);
  file.reset();
  EXPECT_EQ(second.format.closed, 1);

  second.format.openResult = QVERR_BAD_FORMAT;
  EXPECT_EQ(Open("x.fake"), QVERR_BAD_FORMAT);
  EXPECT_EQ(file, nullptr);

  second.format.openResult = QVERR_OK;
  for (const QVERRORCODE_TAG result : {QVERR_FILE_OPEN_FAILED, QVERR_FILE_IO, QVERR_BUSY}) {
    first.format.openResult = result;
    EXPECT_EQ(Open("x.fake"), result);
    EXPECT_EQ(file, nullptr);
  }
  EXPECT_EQ(second.format.opened, 1);
}

TEST_F(MediaFileFunctions, FactoriesThatCannotCreateEndTheSearch) {
  first.format.createsNull = true;
  EXPECT_EQ(Open("x.fake"), QVERR_CREATE_FAILED);
  first.format.createsNull = false;
  first.format.throwsInCreate = true;
  EXPECT_EQ(Open("x.fake"), QVERR_CREATE_FAILED);
  first.format.throwsInCreate = false;
  first.format.throwsInOpen = true;
  EXPECT_EQ(Open("x.fake"), QVERR_CREATE_FAILED);
  EXPECT_EQ(second.format.opened, 0);
}

TEST_F(MediaFileFunctions, NamesWithoutCandidates) {
  EXPECT_EQ(Open(""), QVERR_BAD_FILE_NAME);
  EXPECT_EQ(Open(nullptr), QVERR_BAD_FILE_NAME);
  EXPECT_EQ(Open("x.unknown"), QVERR_BAD_FORMAT);
  // The registry knows "fake" under the name "fake", yet as a file name it has no extension.
  EXPECT_EQ(Open("fake"), QVERR_BAD_FORMAT);
  EXPECT_EQ(Open("dir.fake/name"), QVERR_BAD_FORMAT);
  EXPECT_EQ(Open("dir.fake\\name"), QVERR_BAD_FORMAT);
  const CMediaFileFactory* factory = nullptr;
  bool isDefault = false;
  EXPECT_EQ(MediaAccessorRegistryGetFactory("fake", 0, factory, isDefault), QVERR_OK);
  // The empty extension is one too.
  MediaAccessorRegistryOverride("", &second);
  EXPECT_EQ(Open("dir.fake\\name"), QVERR_OK);
  MediaAccessorRegistryClear("", false);
  // A default factory gets such files.
  MediaAccessorRegistrySetDefault(&second);
  EXPECT_EQ(Open("fake"), QVERR_OK);
  file.reset();
}

TEST_F(MediaFileFunctions, AMissingWavFileIsTheReadersAnswer) {
  EXPECT_EQ(Open("no/such/file.wav"), QVERR_FILE_OPEN_FAILED);
}

TEST_F(MediaFileFunctions, ARefusedFlaggedFileIsASuccessWithoutAFile) {
  first.format.flagged = true;
  EXPECT_EQ(Open("x.fake", true), QVERR_OK);
  EXPECT_EQ(file, nullptr);
  EXPECT_EQ(second.format.opened, 0);
  EXPECT_EQ(Open("x.fake", false), QVERR_OK);
  EXPECT_NE(file, nullptr);
  file.reset();
  unsigned long milliseconds = 1;
  first.format.estimate = 500;
  EXPECT_EQ(MediaFileGetMilliseconds("x.fake", milliseconds, false), QVERR_INVALID_ARGUMENT);
  EXPECT_EQ(milliseconds, 0U);
}

TEST_F(MediaFileFunctions, LengthIsEstimatedOrCounted) {
  first.format.channels = 1;
  first.format.blocks = {std::vector<short>(40'000), std::vector<short>(4'100)};
  unsigned long milliseconds = 0;
  // 44,100 frames at 8,000 Hz: 5,512.5 ms, truncated.
  EXPECT_EQ(MediaFileGetMilliseconds(L"x.fake", milliseconds, false), QVERR_OK);
  EXPECT_EQ(milliseconds, 5512U);
  first.format.estimate = 7;
  first.format.reads = 0;
  EXPECT_EQ(MediaFileGetMilliseconds("x.fake", milliseconds, false), QVERR_OK);
  EXPECT_EQ(milliseconds, 7U);
  EXPECT_EQ(first.format.reads, 0) << "an estimate costs no decoding";
  EXPECT_EQ(MediaFileGetMilliseconds("x.fake", milliseconds, true), QVERR_OK);
  EXPECT_EQ(milliseconds, 5512U);
  // A failing read ends the count; what was counted stays.
  first.format.atEnd = QVERR_FILE_IO;
  EXPECT_EQ(MediaFileGetMilliseconds("x.fake", milliseconds, true), QVERR_FILE_IO);
  EXPECT_EQ(milliseconds, 5512U);
  first.format.frequency = 0;
  EXPECT_EQ(MediaFileGetMilliseconds("x.fake", milliseconds, true), QVERR_FILE_IO);
  EXPECT_EQ(milliseconds, 0U);

  tests::FakeSource source(2, {std::vector<short>(16)});
  CMediaAccessor* accessor = &source;
  EXPECT_EQ(MediaFileGetMilliseconds(accessor, milliseconds), QVERR_OK);
  EXPECT_EQ(milliseconds, 1U);
  EXPECT_EQ(accessor, &source);
  accessor = nullptr;
  EXPECT_EQ(MediaFileGetMilliseconds(accessor, milliseconds), QVERR_INVALID_ARGUMENT);
  EXPECT_EQ(milliseconds, 0U);
}

TEST_F(MediaFileFunctions, Questions) {
  int number = -7;
  EXPECT_EQ(MediaFileGetAvailableChannels("x.fake", number), QVERR_OK);
  EXPECT_EQ(number, 2);
  EXPECT_EQ(MediaFileGetAvailableChannels("x.fake", 0, number), QVERR_OK);
  EXPECT_EQ(number, 2);
  EXPECT_EQ(MediaFileGetAvailableChannels("x.fake", 1, number), QVERR_BAD_TRACK);
  EXPECT_EQ(number, 0);
  EXPECT_EQ(MediaFileGetAvailableTracks("x.fake", number), QVERR_OK);
  EXPECT_EQ(number, 1);
  EXPECT_EQ(MediaFileGetAvailableVideoTracks("x.fake", number), QVERR_OK);
  EXPECT_EQ(number, -1);
  int ids[2] = {7, 7};
  unsigned long count = 2;
  EXPECT_EQ(MediaFileGetAvailableTrackIDs("x.fake", ids, count), QVERR_OK);
  EXPECT_EQ(count, 1U);
  EXPECT_EQ(ids[0], 0);
  EXPECT_EQ(ids[1], 7);
  long width = 0;
  long height = 0;
  EXPECT_EQ(MediaFileGetVideoDimensions("x.fake", width, height), QVERR_OK);
  EXPECT_EQ(width, -1);
  EXPECT_EQ(height, -1);
  EXPECT_EQ(MediaFileGetVideoDimensions("x.unknown", width, height), QVERR_BAD_FORMAT);
  EXPECT_EQ(width, 0);
  EXPECT_EQ(MediaFileGetAvailableTrackIDs("", ids, count), QVERR_BAD_FILE_NAME);
  EXPECT_EQ(count, 0U);
  EXPECT_EQ(MediaFileClose(nullptr), QVERR_INVALID_ARGUMENT);
}

TEST_F(MediaFileFunctions, CompatibilityAsksThePlatformReadersAlone) {
  EXPECT_FALSE(MediaFileIsDirectShowCompatible("x.fake"));
  second.format.description = L"DirectShow Format";
  EXPECT_TRUE(MediaFileIsDirectShowCompatible("x.fake"));
  EXPECT_FALSE(MediaFileIsQuickTimeCompatible(L"x.fake"));
  second.format.openResult = QVERR_BAD_FORMAT;
  EXPECT_FALSE(MediaFileIsDirectShowCompatible("x.fake"));
}

}  // namespace
