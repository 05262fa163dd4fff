// The Opus reader against libopusfile called directly, and against opusdec.
#include <MediaAccessor/all.h>
#include <gtest/gtest.h>
#include <opusfile.h>

#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "tests/fake_media.h"
#include "tests/test_files.h"

namespace {

using namespace Quorvex;

// The samples of a file in memory, read as an application of that library would.
std::vector<short> Direct(const tests::Bytes& bytes) {
  OggOpusFile* const file = op_open_memory(bytes.data(), bytes.size(), nullptr);
  if (file == nullptr) return {};
  std::vector<short> all;
  short block[2048];
  for (int frames = 0; (frames = op_read(file, block, 2048, nullptr)) > 0;) {
    all.insert(all.end(), block, block + frames * op_channel_count(file, -1));
  }
  op_free(file);
  return all;
}

class Opus : public testing::Test {
 protected:
  // Opens a file with its channels kept apart.
  QVERRORCODE_TAG Open(const std::string& path) {
    const QVERRORCODE_TAG result = MediaFileOpen(path.c_str(), file);
    if (result == QVERR_OK) file->SelectChannels(nullptr, 0, kChannelModeSeparate);
    return result;
  }

  // Reads to the end, past failures. @return the frames, and how often a read failed.
  std::pair<unsigned long, int> ReadOn() {
    std::pair<unsigned long, int> counts;
    while (counts.second < 100) {
      const short* samples = nullptr;
      unsigned long frames = 0;
      const QVERRORCODE_TAG result = file->ReadBlock(samples, frames);
      if (result == QVERR_OK && frames == 0) break;
      counts.first += frames;
      if (result == QVERR_OK) continue;
      EXPECT_EQ(result, QVERR_BAD_FORMAT);
      EXPECT_EQ(frames, 0U);
      ++counts.second;
    }
    return counts;
  }

  const tests::TemporaryDirectory directory;
  MediaFilePtr file;
};

TEST_F(Opus, HasTheSamplesOfItsLibrary) {
  struct Case {
    const char* name;
    int channels;
    unsigned long milliseconds;
  };
  for (const Case& c :
       {Case{"opus_mono", 1, 200}, Case{"opus_stereo", 2, 200}, Case{"opus_6_channels", 6, 100},
        Case{"opus_8_channels", 8, 100}, Case{"opus_chained", 2, 300}, Case{"opus_gain", 2, 200}}) {
    const std::string path = tests::Fixture(std::string(c.name) + ".opus");
    ASSERT_EQ(Open(path), QVERR_OK) << c.name;
    EXPECT_EQ(file->GetSamplingFrequency(), 48'000U);
    EXPECT_EQ(file->GetTrackChannelCount(), c.channels) << c.name;
    EXPECT_EQ(file->GetMilliseconds(), c.milliseconds) << c.name;
    const std::vector<short> samples = tests::PullAll(*file);
    EXPECT_EQ(samples, Direct(tests::ReadBytes(path))) << c.name;
    EXPECT_EQ(samples.size(), c.milliseconds * 48 * static_cast<unsigned>(c.channels)) << c.name;
  }
}

// The library shapes noise when it rounds to 16 bits, and opusdec was told not to.
TEST_F(Opus, IsCloseToOpusdecWithPreSkipAndGain) {
  const std::vector<short> expected = tests::ReadSamples(tests::Fixture("opus_stereo.s16"));
  for (const auto& [name, gain] :
       {std::pair{"opus_stereo.opus", 1.0}, std::pair{"opus_gain.opus", 0.501187}}) {  // -6 dB
    ASSERT_EQ(Open(tests::Fixture(name)), QVERR_OK);
    const std::vector<short> samples = tests::PullAll(*file);
    ASSERT_EQ(samples.size(), expected.size());
    double power = 0;
    for (std::size_t i = 0; i < samples.size(); ++i) {
      power += std::pow(samples[i] - gain * expected[i], 2);
    }
    EXPECT_LT(std::sqrt(power / static_cast<double>(samples.size())), 4.0) << name;
  }
}

// A mono link after a stereo one: its samples must never be counted as frames of two.
TEST_F(Opus, ALinkWithAnotherChannelCountIsAFailureThere) {
  ASSERT_EQ(Open(tests::Fixture("opus_chained_channels.opus")), QVERR_OK);
  const auto [frames, failures] = ReadOn();
  EXPECT_EQ(frames, 9600U) << "the first link, whole";
  EXPECT_GT(failures, 1) << "the others, left out";
  EXPECT_LT(failures, 100);
}

TEST_F(Opus, AStreamThatIsCutOffInAPage) {
  tests::Bytes bytes = tests::ReadBytes(std::string(MEDIA_ACCESSOR_RECORDINGS) + "/call.opus");
  bytes.resize(bytes.size() / 2);
  tests::WriteBytes(directory.File("cut.opus"), bytes);
  ASSERT_EQ(Open(directory.File("cut.opus")), QVERR_OK);
  const std::vector<short> samples = tests::PullAll(*file);
  EXPECT_EQ(samples, Direct(bytes));
  EXPECT_GT(samples.size(), 48'000U);
}

TEST_F(Opus, AHoleIsAFailureOfOneRead) {
  tests::Bytes bytes = tests::ReadBytes(std::string(MEDIA_ACCESSOR_RECORDINGS) + "/call.opus");
  bytes[bytes.size() / 2] ^= 0x55;  // the page is lost
  tests::WriteBytes(directory.File("hole.opus"), bytes);
  ASSERT_EQ(Open(directory.File("hole.opus")), QVERR_OK);
  const auto [frames, failures] = ReadOn();
  EXPECT_GE(frames, Direct(bytes).size() / 2) << "that stops at the hole";
  EXPECT_EQ(failures, 1);
}

// The link before it is whole, and may be an hour of a recording.
TEST_F(Opus, AChainWhoseLastLinkIsCutOffInItsHeaders) {
  tests::Bytes bytes = tests::ReadBytes(tests::Fixture("opus_chained.opus"));
  bytes.resize(bytes.size() - 300);
  tests::WriteBytes(directory.File("cut.opus"), bytes);
  ASSERT_EQ(Open(directory.File("cut.opus")), QVERR_OK);
  EXPECT_EQ(file->GetMilliseconds(), 0U) << "not known";
  const auto [frames, failures] = ReadOn();
  EXPECT_EQ(frames, 9600U);
  EXPECT_LE(failures, 1);
}

// Chained streams must have serial numbers of their own; libopusfile then fails for ever.
TEST_F(Opus, AfterAFailureThatNothingFollowsComesTheEnd) {
  tests::Bytes bytes;
  for (const char* name : {"opus_mono.opus", "opus_stereo.opus", "opus_mono.opus"}) {
    const tests::Bytes link = tests::ReadBytes(tests::Fixture(name));
    bytes.insert(bytes.end(), link.begin(), link.end());
  }
  tests::WriteBytes(directory.File("serials.opus"), bytes);
  ASSERT_EQ(Open(directory.File("serials.opus")), QVERR_OK);
  const auto [frames, failures] = ReadOn();
  EXPECT_EQ(frames, 9600U);
  EXPECT_EQ(failures, 1);
}

TEST_F(Opus, BlocksHave2048SamplesOfAllChannels) {
  ASSERT_EQ(Open(tests::Fixture("opus_8_channels.opus")), QVERR_OK);
  EXPECT_EQ(tests::BlockSizes(*file).at(0), 256U);
}

TEST_F(Opus, NamesOfEveryKind) {
  tests::WriteBytes(directory.File("\xF0\x9D\x84\x9E\xC3\xBC \xE6\x97\xA5.opus"),
                    tests::ReadBytes(tests::Fixture("opus_stereo.opus")));
  const std::string ascii = directory.File("");
  const std::wstring wide(ascii.begin(), ascii.end());
  EXPECT_EQ(MediaFileOpen((wide + L"\U0001D11E\u00FC \u65E5.opus").c_str(), file), QVERR_OK);
  EXPECT_EQ(tests::WideDescription(*file), L"Opus media format");
  char text[64];
  file->GetFormatDescription(text, sizeof text);
  EXPECT_STREQ(text, "Opus format");
}

}  // namespace
