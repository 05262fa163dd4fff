// The mixer: selection, arithmetic at its edges, push and pull.
#include <MediaAccessor/all.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/fake_media.h"

namespace {

using namespace Quorvex;
using Samples = std::vector<short>;

class Mixer : public testing::Test {
 protected:
  QVERRORCODE_TAG Push(const Samples& samples) {
    return mixer->Write(samples.data(), static_cast<unsigned long>(samples.size() * sizeof(short)));
  }

  // One block of what waits, and its frame count in `frames`.
  Samples Read() {
    const short* samples = nullptr;
    EXPECT_EQ(mixer->ReadBlock(samples, frames), QVERR_OK);
    return Samples(samples, samples + frames * mixer->GetChannelCount());
  }

  Samples Mix(int channels, const std::vector<int>& selected, int mode, const Samples& input) {
    EXPECT_EQ(mixer->SetChannelCount(channels), QVERR_OK);
    EXPECT_EQ(Select(selected, mode), QVERR_OK);
    EXPECT_EQ(Push(input), QVERR_OK);
    return Read();
  }

  QVERRORCODE_TAG Select(const std::vector<int>& selected, int mode) {
    return mixer->SelectChannels(selected.data(), static_cast<int>(selected.size()), mode);
  }

  std::vector<int> Selection() {
    std::vector<int> selection(static_cast<std::size_t>(mixer->GetSelectedChannelCount()), -1);
    mixer->GetSelectedChannels(selection.data(), static_cast<int>(selection.size()));
    return selection;
  }

  MediaAccessorMixerPtr mixer{MediaAccessorMixer::CreateInstance()};
  unsigned long frames = 0;
};

TEST_F(Mixer, BeforeItsChannelCountIsKnown) {
  const short* samples = nullptr;
  EXPECT_EQ(Push({1, 2}), QVERR_UNSUPPORTED_CHANNELS);
  EXPECT_EQ(mixer->ReadBlock(samples, frames), QVERR_UNSUPPORTED_CHANNELS);
  EXPECT_EQ(mixer->SelectChannels(nullptr, 0, kChannelModeSum), QVERR_UNSUPPORTED_CHANNELS);
  EXPECT_EQ(mixer->GetSelectedChannelCount(), 0);
  EXPECT_EQ(mixer->SetChannelCount(0), QVERR_BAD_CHANNEL_COUNT);
  EXPECT_EQ(mixer->SetChannelCount(-1), QVERR_BAD_CHANNEL_COUNT);
  EXPECT_EQ(mixer->SetChannelCount(3), QVERR_OK);
  EXPECT_EQ(Selection(), (std::vector<int>{0, 1, 2}));
  EXPECT_EQ(mixer->GetChannelMode(), kChannelModeAverage);
}

TEST_F(Mixer, Selection) {
  mixer->SetChannelCount(3);
  EXPECT_EQ(Select({2, 0, 2}, kChannelModeSeparate), QVERR_OK);
  EXPECT_EQ(Selection(), (std::vector<int>{2, 0, 2}));
  EXPECT_EQ(mixer->GetChannelCount(), 3U);
  int two[2] = {7, 7};
  EXPECT_EQ(mixer->GetSelectedChannels(two, 2), 3);
  EXPECT_EQ(two[0], 7) << "too small a list is left alone";
  // A channel that is not there leaves nothing selected and the mode as it was.
  EXPECT_EQ(Select({0, 3, -1}, kChannelModeSum), QVERR_UNSUPPORTED_CHANNELS);
  EXPECT_EQ(Selection(), std::vector<int>{});
  EXPECT_EQ(mixer->GetChannelMode(), kChannelModeSeparate);
  EXPECT_EQ(Push({1, 2, 3}), QVERR_OK);
  EXPECT_EQ(Read(), Samples{});
  // A negative index selects all, whatever follows it.
  EXPECT_EQ(Select({1, -1, 9}, kChannelModeSum), QVERR_OK);
  EXPECT_EQ(Selection(), (std::vector<int>{0, 1, 2}));
  EXPECT_EQ(mixer->SelectChannel(1), QVERR_OK);
  EXPECT_EQ(Selection(), std::vector<int>{1});
  EXPECT_EQ(mixer->GetChannelMode(), kChannelModeAverage);
  // An existing selection survives a new channel count, and is refused when it no longer fits.
  EXPECT_EQ(Select({2}, kChannelModeSum), QVERR_OK);
  EXPECT_EQ(mixer->SetChannelCount(2), QVERR_OK);
  EXPECT_EQ(Push({1, 2}), QVERR_UNSUPPORTED_CHANNELS);
  EXPECT_EQ(mixer->SetChannelCount(1), QVERR_OK);
  EXPECT_EQ(Push({1, 2}), QVERR_OK) << "one channel is copied, whatever is selected";
}

TEST_F(Mixer, ArithmeticAtItsEdges) {
  struct Case {
    int channels;
    std::vector<int> selected;
    int mode;
    Samples input;
    Samples output;
  };
  const std::vector<Case> cases = {
      {2, {}, kChannelModeSum, {32767, 32767, -32768, -32768}, {32767, -32767}},
      {2, {}, kChannelModeSum, {32767, -32768, 1, 2}, {-1, 3}},
      {2, {}, 7, {100, 200}, {300}},  // any other mode sums
      {2, {}, -1, {100, 200}, {300}},
      {2, {}, kChannelModeAverage, {3, -4, -3, 4, 3, 4, -3, -4}, {0, 0, 3, -3}},
      {2, {}, kChannelModeAverage, {-32768, -32768, 32767, 32767}, {-32767, 32767}},
      {2, {1}, kChannelModeAverage, {5, -32768, 5, 32767}, {-32767, 32767}},
      {3, {}, kChannelModeAverage, {1, 1, 0, -1, -1, 0, 10, 10, 10}, {0, 0, 10}},
      {3, {2, 0}, kChannelModeAverage, {7, 100, 8}, {7}},
      {3, {0, 0, 1}, kChannelModeSum, {10, 1, 99}, {21}},  // a channel may be selected twice
      // Kept apart, nothing is clipped, and the order is the selection's ...
      {3, {2, 0}, kChannelModeSeparate, {1, 2, -32768, 4, 5, 6}, {-32768, 1, 6, 4}},
      // ... but for a full selection, which keeps the input's on purpose.
      {2, {1, 0}, kChannelModeSeparate, {1, -32768}, {1, -32768}},
      // One channel is copied whatever is selected, so -32768 survives.
      {1, {}, kChannelModeAverage, {-32768, 5}, {-32768, 5}},
      {1, {0}, kChannelModeSum, {-32768}, {-32768}},
  };
  for (const Case& c : cases) {
    mixer.reset(MediaAccessorMixer::CreateInstance());
    EXPECT_EQ(Mix(c.channels, c.selected, c.mode, c.input), c.output)
        << c.channels << " channels, mode " << c.mode;
  }
}

TEST_F(Mixer, APushAndAReadAreOneCycle) {
  mixer->SetChannelCount(2);
  EXPECT_EQ(Push({1, 3}), QVERR_OK);
  EXPECT_EQ(Push({5, 7}), QVERR_OK);
  EXPECT_EQ(Read(), (Samples{2, 6}));
  EXPECT_EQ(Read(), (Samples{2, 6})) << "the same block until the next push";
  EXPECT_EQ(mixer->Write(Samples{9, 9, 7, 7}.data(), 7), QVERR_OK);
  EXPECT_EQ(Read(), Samples{9}) << "an incomplete frame is ignored";
  // Copies replace what waits.
  Select({}, kChannelModeSeparate);
  EXPECT_EQ(Push({1, 2}), QVERR_OK);
  EXPECT_EQ(Push({3, 4}), QVERR_OK);
  EXPECT_EQ(Read(), (Samples{3, 4}));
  EXPECT_EQ(frames, 1U);
  // The end of the stream empties a buffer that was handed out, and only that.
  EXPECT_EQ(mixer->Write(nullptr, 0), QVERR_OK);
  EXPECT_EQ(Read(), Samples{});
  EXPECT_EQ(Push({5, 6}), QVERR_OK);
  EXPECT_EQ(mixer->Write(nullptr, 0), QVERR_OK);
  EXPECT_EQ(Read(), (Samples{5, 6}));
}

TEST_F(Mixer, TheTargetIsPushedBytesAndToldTheChannelCount) {
  tests::FakeSink sink;
  mixer->SetTarget(&sink);
  EXPECT_TRUE(sink.channelCounts.empty());
  mixer->SetChannelCount(3);
  Select({0, 2}, kChannelModeSeparate);
  EXPECT_EQ(sink.channelCounts, (std::vector<int>{1, 1, 2}));
  EXPECT_EQ(Push({1, 2, 3, 4, 5, 6}), QVERR_OK);
  EXPECT_EQ(Push({7, 8, 9}), QVERR_OK);
  EXPECT_EQ(sink.counts, (std::vector<unsigned long>{8, 4}));
  EXPECT_EQ(sink.written, (Samples{1, 3, 4, 6, 7, 9}));
  sink.result = QVERR_FILE_WRITE_FAILED;
  EXPECT_EQ(Push({1, 2, 3}), QVERR_FILE_WRITE_FAILED);
  EXPECT_EQ(mixer->Write(nullptr, 0), QVERR_FILE_WRITE_FAILED);
  EXPECT_EQ(sink.counts.back(), 0U) << "the end of the stream is handed on";
}

TEST_F(Mixer, PullsFromASource) {
  tests::FakeSource source(2, {{1, 3, 5, 7}, {-3, -4}});
  EXPECT_EQ(mixer->SetSource(nullptr), QVERR_NO_SOURCE);
  source.flagged = true;
  EXPECT_EQ(mixer->SetSource(&source), QVERR_INVALID_ARGUMENT);
  EXPECT_EQ(mixer->SetSource(mixer.get()), QVERR_INVALID_ARGUMENT) << "no circles";
  EXPECT_EQ(mixer->GetSource(), nullptr);
  EXPECT_FALSE(mixer->IsFlagged());
  EXPECT_EQ(mixer->GetSamplingFrequency(), 0U);
  source.flagged = false;
  EXPECT_EQ(mixer->SetSource(&source), QVERR_OK);
  EXPECT_EQ(mixer->GetSource(), &source);
  source.flagged = true;
  EXPECT_TRUE(mixer->IsFlagged()) << "the source's answer travels up";
  EXPECT_EQ(mixer->GetSamplingFrequency(), 8000U);
  int context = 0;
  const short* samples = nullptr;
  EXPECT_EQ(mixer->ReadBlock(samples, frames, &context), QVERR_OK);
  EXPECT_EQ(source.lastContext, &context);
  EXPECT_EQ(Samples(samples, samples + frames), (Samples{2, 6}));
  EXPECT_EQ(tests::PullAll(*mixer), Samples{-3});
}

TEST_F(Mixer, SourceFailuresPassThrough) {
  tests::FakeSource source(2, {{1, 3}});
  source.atEnd = QVERR_FILE_IO;
  mixer->SetSource(&source);
  EXPECT_EQ(Read(), Samples{2});
  const short* samples = nullptr;
  EXPECT_EQ(mixer->ReadBlock(samples, frames), QVERR_FILE_IO);
  EXPECT_EQ(samples, nullptr);
  EXPECT_EQ(frames, 0U);
}

TEST_F(Mixer, ASourceThatChangesItsChannelCountIsNotReadOutOfBounds) {
  tests::FakeSource source(2, {{1, 3}});
  mixer->SetSource(&source);
  source.SetChannelCount(1);
  const short* samples = nullptr;
  EXPECT_EQ(mixer->ReadBlock(samples, frames), QVERR_UNSUPPORTED_CHANNELS);
  tests::FakeSource none(0, {});
  EXPECT_EQ(mixer->SetSource(&none), QVERR_OK);
  EXPECT_EQ(mixer->ReadBlock(samples, frames), QVERR_UNSUPPORTED_CHANNELS);
}

// Wanted: the pulling path does not fill the buffer that it hands out for a one-channel source.
TEST_F(Mixer, AOneChannelSourceYieldsTheMixersOwnBuffer) {
  tests::FakeSource source(1, {{1, 2, 3}, {4}});
  mixer->SetSource(&source);
  EXPECT_EQ(Read(), Samples{});
  mixer->Write(Samples{9}.data(), 2);
  EXPECT_EQ(Read(), Samples{9});
}

TEST_F(Mixer, Texts) {
  const auto typeText = [this](auto character) {
    return TextOf<decltype(character)>([this](auto* buffer, unsigned long capacity) {
      return mixer->GetTypeDescription(buffer, capacity);
    });
  };
  EXPECT_EQ(tests::WideDescription(*mixer), L"Mixer with source: ");
  EXPECT_EQ(typeText('x'), "Quorvex Mixer media accessor");
  EXPECT_EQ(typeText(L'x'), L"Quorvex Mixer media accessor");
  tests::FakeSource source(1, {});
  mixer->SetSource(&source);
  char narrow[64];
  EXPECT_EQ(mixer->GetDescription(narrow, sizeof narrow), 31U);
  EXPECT_STREQ(narrow, "Mixer with source: Fake source");
}

}  // namespace
