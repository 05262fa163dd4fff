// The portable WAV reader on files that other programs wrote, and on files that lie.
#include <MediaAccessor/all.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "tests/fake_media.h"
#include "tests/foreign_file.h"
#include "tests/test_files.h"
#include "tests/wav_bytes.h"

namespace {

using namespace Quorvex;
using tests::ForeignFileCase;

constexpr const wchar_t* kPcm8 = L"Uncompressed unsigned 8-bit linear PCM";
constexpr const wchar_t* kPcm16 = L"Uncompressed signed 16-bit linear PCM";
constexpr const wchar_t* kALaw = L"CCITT A-Law";
constexpr const wchar_t* kMuLaw = L"CCITT u-Law";

class ForeignFile : public testing::TestWithParam<ForeignFileCase> {};

TEST_P(ForeignFile, HasTheSamplesOfTheProgramThatWroteIt) {
  const ForeignFileCase& c = GetParam();
  const auto expected = tests::ReadSamples(c.Path(".s16"));
  EXPECT_EQ(expected.size(), 2000U * static_cast<unsigned>(c.channels));
  tests::ExpectForeignFile(c, ".wav", L"Portable WAV Format", expected);
}

INSTANTIATE_TEST_SUITE_P(PortableWAV, ForeignFile,
                         testing::Values(ForeignFileCase{"sox_pcm16_stereo", 2, kPcm16},
                                         ForeignFileCase{"sox_pcm8_mono", 1, kPcm8},
                                         ForeignFileCase{"sox_alaw_stereo", 2, kALaw},
                                         ForeignFileCase{"sox_mulaw_mono", 1, kMuLaw},
                                         ForeignFileCase{"ffmpeg_pcm16_mono", 1, kPcm16},
                                         ForeignFileCase{"ffmpeg_pcm8_stereo", 2, kPcm8},
                                         ForeignFileCase{"ffmpeg_alaw_mono", 1, kALaw},
                                         ForeignFileCase{"ffmpeg_mulaw_stereo", 2, kMuLaw},
                                         ForeignFileCase{"sndfile_pcm16_stereo", 2, kPcm16},
                                         ForeignFileCase{"sndfile_pcm8_stereo", 2, kPcm8},
                                         ForeignFileCase{"sndfile_alaw_stereo", 2, kALaw},
                                         ForeignFileCase{"sndfile_ulaw_mono", 1, kMuLaw}),
                         [](const auto& test) { return std::string(test.param.name); });

class PortableWAV : public testing::Test {
 protected:
  QVERRORCODE_TAG Open(const tests::Bytes& bytes) {
    const std::string path = directory.File("x.wav");
    file.reset();
    tests::WriteBytes(path, bytes);
    return MediaFileOpen(path.c_str(), file);
  }

  static std::string Samples32(const std::vector<std::int32_t>& samples) {
    std::string data;
    for (const std::int32_t sample : samples) {
      data += tests::WavBytes::Number(static_cast<std::uint32_t>(sample), 4);
    }
    return data;
  }

  const tests::TemporaryDirectory directory;
  MediaFilePtr file;
};

TEST_F(PortableWAV, RefusesWhatItDoesNotTake) {
  for (const char* name : {"refused_pcm24.wav", "refused_float.wav", "refused_3_channels.wav",
                           "refused_192000_hz.wav", "refused_aiff.wav"}) {
    // By itself: others may take it then.
    const CMediaFileFactory* portable = nullptr;
    bool isDefault = false;
    ASSERT_EQ(MediaAccessorRegistryGetFactory("wav", 0, portable, isDefault), QVERR_OK);
    file.reset(portable->CreateMediaFile());
    EXPECT_EQ(file->Open(tests::Fixture(name).c_str()), QVERR_BAD_FORMAT) << name;
  }
}

TEST_F(PortableWAV, ThirtyTwoBitSamplesAreScaledByTheirPeak) {
  struct Case {
    const char* what;
    std::vector<std::int32_t> input;
    std::vector<short> output;
  };
  constexpr std::int32_t kSmallest = std::numeric_limits<std::int32_t>::min();
  const std::vector<Case> cases = {
      {"a peak of 15 bits is kept", {32767, -5, 7}, {32767, -5, 7}},
      // 17 significant bits: one is shifted out, towards zero on both sides.
      {"shifted by one", {0x10000, -3, 3, -0x10000}, {-32768, -1, 1, -32768}},
      // Sixteen bits of magnitude remain, the low 16 bits of the value are kept.
      {"31 bits", {0x7FFFFFFF, 0x40000000, 0x3FFFFFFF}, {-1, -32768, 32767}},
      {"the smallest integer has 32", {kSmallest, 0x7FFFFFFF, -0x10000}, {-32768, 32767, -1}},
      // Only every third sample is looked at: the others lose what is above their low 16 bits.
      {"a skipped peak", {1, 0x12345, -0x12345}, {1, 0x2345, -0x2345}},
  };
  for (const Case& c : cases) {
    tests::WavBytes wav;
    wav.blockAlign = 4;
    wav.data = Samples32(c.input);
    ASSERT_EQ(Open(wav.ToBytes()), QVERR_OK);
    EXPECT_EQ(tests::PullAll(*file), c.output) << c.what;
  }
}

TEST_F(PortableWAV, ThirtyTwoBitScalingIsDecidedForEachSecond) {
  tests::WavBytes wav;
  wav.blockAlign = 4;
  wav.frequency = 3;
  wav.data = Samples32({0x100000, 16, 32, /* the next second */ 16, 32, 48});
  ASSERT_EQ(Open(wav.ToBytes()), QVERR_OK);
  EXPECT_EQ(tests::PullAll(*file), (std::vector<short>{-32768, 0, 1, 16, 32, 48}));
}

// sndfile-convert made 32-bit samples of 16-bit speech, so their low halves are zero; sox read
// them.
TEST_F(PortableWAV, ThirtyTwoBitSpeechFromLibsndfile) {
  const tests::Bytes raw = tests::ReadBytes(tests::Fixture("sndfile_pcm32_mono.s32"));
  std::vector<std::int64_t> samples;
  for (std::size_t i = 0; i + 3 < raw.size(); i += 4) {
    std::uint32_t value = 0;
    for (std::size_t b = 0; b < 4; ++b) value |= std::uint32_t{raw[i + b]} << (8 * b);
    samples.push_back(static_cast<std::int32_t>(value));
  }
  std::int64_t peak = 0;
  for (std::size_t i = 0; i < samples.size(); i += 3) peak |= std::abs(samples[i]);
  std::int64_t divisor = 1;  // C++ division rounds towards zero, as the rule wants it
  while (peak / divisor > 0xFFFF) divisor *= 2;
  std::vector<short> expected;
  for (const std::int64_t sample : samples)
    expected.push_back(static_cast<short>(sample / divisor));
  ASSERT_EQ(MediaFileOpen(tests::Fixture("sndfile_pcm32_mono.wav").c_str(), file), QVERR_OK);
  EXPECT_EQ(tests::PullAll(*file), expected);
}

TEST_F(PortableWAV, DataThatRunsToTheEndOfTheFile) {
  tests::WavBytes wav;
  wav.data = std::string("\1\0\2\0\3\0", 6);
  for (const std::int64_t size : {std::int64_t{0}, std::int64_t{7}, std::int64_t{0xFFFFFFFF}}) {
    wav.dataSize = size;
    ASSERT_EQ(Open(wav.ToBytes()), QVERR_OK) << size;
    EXPECT_EQ(tests::PullAll(*file), (std::vector<short>{1, 2, 3})) << size;
  }
  // A true size ends the data, whatever follows.
  wav.dataSize = 4;
  ASSERT_EQ(Open(wav.ToBytes()), QVERR_OK);
  EXPECT_EQ(tests::PullAll(*file), (std::vector<short>{1, 2}));
  // No data at all is a file of no frames.
  wav.data.clear();
  wav.dataSize = -1;
  ASSERT_EQ(Open(wav.ToBytes()), QVERR_OK);
  EXPECT_EQ(file->GetMilliseconds(), 0U);
  EXPECT_EQ(tests::PullAll(*file), std::vector<short>{});
}

TEST_F(PortableWAV, AFileThatIsCutWhileItIsReadIsAnError) {
  tests::WavBytes wav;
  wav.frequency = 2;
  wav.data = std::string(16, '\1');
  ASSERT_EQ(Open(wav.ToBytes()), QVERR_OK);
  const std::string path = directory.File("x.wav");
  std::filesystem::resize_file(path, std::filesystem::file_size(path) - 9);
  const short* samples = nullptr;
  unsigned long frames = 0;
  EXPECT_EQ(file->ReadBlock(samples, frames), QVERR_OK);
  EXPECT_EQ(frames, 2U);
  EXPECT_EQ(file->ReadBlock(samples, frames), QVERR_OK);
  EXPECT_EQ(frames, 1U) << "the whole frames that are left";
  EXPECT_EQ(file->ReadBlock(samples, frames), QVERR_FILE_IO);
  EXPECT_EQ(frames, 0U);
}

}  // namespace
