// The base of the readers: lifecycle, channel choice, texts.
#include <MediaAccessor/all.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/fake_media.h"

namespace {

using namespace Quorvex;
using Samples = std::vector<short>;

class MultiChannelFile : public testing::Test {
 protected:
  tests::FakeFormat format;
  tests::FakeFile file{format};
};

TEST_F(MultiChannelFile, ClosedFileAnswers) {
  const short* samples = reinterpret_cast<const short*>(this);
  unsigned long frames = 9;
  EXPECT_EQ(file.ReadBlock(samples, frames), QVERR_FILE_NOT_OPEN);
  EXPECT_EQ(samples, nullptr);
  EXPECT_EQ(frames, 0U);
  EXPECT_EQ(file.SelectChannel(0), QVERR_FILE_NOT_OPEN);
  EXPECT_EQ(file.Close(), QVERR_FILE_NOT_OPEN);
  EXPECT_EQ(file.GetSelectedChannelCount(), 0);
  EXPECT_EQ(file.GetChannelMode(), kChannelModeSeparate);
  EXPECT_EQ(file.GetChannelCount(), 0U);
  int zeroed[3] = {7, 7, 7};
  EXPECT_EQ(file.GetSelectedChannels(zeroed, 2), 0);
  EXPECT_EQ(zeroed[1], 0);
  EXPECT_EQ(zeroed[2], 7);
  EXPECT_EQ(file.GetSelectedChannels(nullptr, 2), 0);
  wchar_t name[4] = L"abc";
  EXPECT_EQ(file.GetFileName(name, 4), 1U);
  EXPECT_STREQ(name, L"");
}

TEST_F(MultiChannelFile, Lifecycle) {
  format.openResult = QVERR_FILE_IO;
  EXPECT_EQ(file.Open("x"), QVERR_FILE_IO);
  EXPECT_FALSE(file.IsOpen());
  format.openResult = QVERR_OK;
  EXPECT_EQ(file.Open(L"x"), QVERR_OK);
  EXPECT_EQ(file.Open("y"), QVERR_ALREADY_OPEN);
  EXPECT_TRUE(file.IsOpen());
  EXPECT_EQ(format.opened, 1);
  EXPECT_EQ(file.Close(), QVERR_OK);
  EXPECT_EQ(format.closed, 1);
  // A name that nothing can be opened under is given back to the format.
  EXPECT_EQ(file.Open(static_cast<const wchar_t*>(nullptr)), QVERR_BAD_FILE_NAME);
  EXPECT_EQ(format.closed, format.opened);
  EXPECT_EQ(file.Open("z"), QVERR_OK);
  char name[8];
  EXPECT_EQ(file.GetFileName(name, 8), 2U);
  EXPECT_STREQ(name, "z");
}

// A reader of an application's own may throw anywhere.
TEST_F(MultiChannelFile, WhatAReaderThrowsBecomesAResult) {
  format.throwsAfterOpen = true;
  EXPECT_EQ(file.Open("x"), QVERR_CREATE_FAILED);
  EXPECT_FALSE(file.IsOpen());
  EXPECT_EQ(format.closed, 1);
  format.throwsAfterOpen = false;
  EXPECT_EQ(file.Open("x"), QVERR_OK);
  format.throwsAfterOpen = true;
  EXPECT_EQ(file.SelectChannel(0), QVERR_CREATE_FAILED);
  EXPECT_EQ(file.Close(), QVERR_OK);
}

TEST_F(MultiChannelFile, AllChannelsAveragedUnlessChosenOtherwise) {
  format.blocks = {{3, -4, -32768, -32768}};
  file.Open("x");
  EXPECT_EQ(tests::PullAll(file), (Samples{0, -32767}));
  file.Close();
  file.Open("x");
  EXPECT_EQ(file.SelectChannel(1), QVERR_OK);
  EXPECT_EQ(tests::PullAll(file), (Samples{-4, -32767}));
  file.Close();
  file.Open("x");
  const int both[] = {0, 1};
  EXPECT_EQ(file.SelectChannels(both, 2, kChannelModeSeparate), QVERR_OK);
  EXPECT_EQ(file.GetChannelCount(), 2U);
  EXPECT_EQ(tests::PullAll(file), (Samples{3, -4, -32768, -32768}));
  const int third = 2;
  EXPECT_EQ(file.SelectChannels(&third, 1, kChannelModeSum), QVERR_UNSUPPORTED_CHANNELS);
  EXPECT_EQ(file.GetSelectedChannelCount(), 0);
}

TEST_F(MultiChannelFile, TheReaderChoosesTheModeOfANewFile) {
  format.defaultMode = kChannelModeSeparate;
  format.blocks = {{1, 2}};
  file.Open("x");
  EXPECT_EQ(file.GetChannelMode(), kChannelModeSeparate);
  EXPECT_EQ(tests::PullAll(file), (Samples{1, 2}));
}

TEST_F(MultiChannelFile, OneChannelIsDeliveredAsItIs) {
  format.channels = 1;
  format.blocks = {{-32768, 32767}, {5}};
  file.Open("x");
  EXPECT_EQ(tests::PullAll(file), (Samples{-32768, 32767, 5}));
}

// What passes the mixer by and what goes through it must be told apart at every block.
TEST_F(MultiChannelFile, TheSelectionMayChangeBetweenBlocks) {
  format.blocks = {{1, 3}, {5, 7}, {9, 11}, {13, 15}};
  const short* samples = nullptr;
  unsigned long frames = 0;
  file.Open("x");
  file.ReadBlock(samples, frames);
  EXPECT_EQ(Samples(samples, samples + frames), Samples{2});
  file.SelectChannels(nullptr, 0, kChannelModeSeparate);
  file.ReadBlock(samples, frames);
  EXPECT_EQ(Samples(samples, samples + frames * 2), (Samples{5, 7}));
  file.SelectChannel(1);
  EXPECT_EQ(tests::PullAll(file), (Samples{11, 15}));
}

TEST_F(MultiChannelFile, FailuresOfTheFormatPassThrough) {
  format.blocks = {{1, 3}};
  format.atEnd = QVERR_FILE_IO;
  const short* samples = nullptr;
  unsigned long frames = 0;
  file.Open("x");
  EXPECT_EQ(file.ReadBlock(samples, frames), QVERR_OK);
  EXPECT_EQ(file.ReadBlock(samples, frames), QVERR_FILE_IO);
  EXPECT_EQ(samples, nullptr);
  EXPECT_EQ(frames, 0U);
  file.Close();
  format.channels = 0;
  format.atEnd = QVERR_OK;
  format.blocks.clear();
  EXPECT_EQ(file.Open("x"), QVERR_OK);
  EXPECT_EQ(file.ReadBlock(samples, frames), QVERR_UNSUPPORTED_CHANNELS);
}

TEST_F(MultiChannelFile, TracksAndVideoUnlessAFormatHasMore) {
  EXPECT_EQ(file.GetAvailableTracks(), 1);
  EXPECT_EQ(file.GetCurrentTrack(), 0);
  EXPECT_EQ(file.SelectTrack(0), QVERR_OK);
  EXPECT_EQ(file.SelectTrack(1), QVERR_BAD_TRACK);
  EXPECT_EQ(file.SelectTrack(-1), QVERR_BAD_TRACK);
  EXPECT_EQ(file.SelectTrackByTrackId(0), QVERR_OK);
  EXPECT_EQ(file.SelectTrackByTrackId(1), QVERR_BAD_TRACK);
  int id = 7;
  EXPECT_EQ(file.GetAvailableTrackIDs(&id, 0), 1U);
  EXPECT_EQ(id, 7);
  EXPECT_EQ(file.GetAvailableTrackIDs(&id, 1), 1U);
  EXPECT_EQ(id, 0);
  EXPECT_EQ(file.GetAvailableTrackIDs(nullptr, 0), 1U);
  EXPECT_EQ(file.GetAvailableVideoTracks(), -1);
  EXPECT_EQ(file.VideoWidth(), -1);
  EXPECT_EQ(file.VideoHeight(), -1);
}

// The accessor's own two type texts are the file's format texts.
TEST_F(MultiChannelFile, Texts) {
  const CMediaAccessor& accessor = file;
  wchar_t wide[32];
  char narrow[32];
  EXPECT_EQ(accessor.GetTypeDescription(wide, 32), 14U);
  EXPECT_STREQ(wide, L"fake encoding");
  EXPECT_EQ(accessor.GetTypeDescription(narrow, 32), 14U);
  EXPECT_STREQ(narrow, "fake encoding");
  EXPECT_EQ(accessor.GetDescription(narrow, 5), 5U);
  EXPECT_STREQ(narrow, "Fake");
}

// Building and ending chains: nobody releases a source that it was given.
TEST(Ownership, DecoratorsLeaveTheirSourceAlone) {
  struct CountedSource : tests::FakeSource {
    explicit CountedSource(int& ended) : FakeSource(1, {}), ended_(ended) {}
    ~CountedSource() override { ++ended_; }
    int& ended_;
  };
  int ended = 0;
  {
    const MediaAccessorPtr source(new CountedSource(ended));
    {
      const MediaAccessorMixerPtr mixer(MediaAccessorMixer::CreateInstance());
      mixer->SetSource(source.get());
      CountedSource other(ended);
      mixer->SetSource(&other);
    }
    EXPECT_EQ(ended, 1) << "only the local one";
    EXPECT_EQ(source->GetSamplingFrequency(), 8000U);
  }
  EXPECT_EQ(ended, 2);
  Release(static_cast<CMediaAccessor*>(nullptr));
  Release(static_cast<MediaAccessorMixer*>(nullptr));
}

}  // namespace
