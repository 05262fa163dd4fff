// The reader of raw frames and speech-coded wave files against other programs, and what it refuses.
#include <MediaAccessor/all.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/fake_media.h"
#include "tests/likeness.h"
#include "tests/test_files.h"
#include "tests/wav_bytes.h"

namespace {

using namespace Quorvex;

constexpr const wchar_t* kFormat = L"AUD/NMF/WAV/G729AB/TrueSpeech/G722/ALaw/Mulaw format";

class AUD : public testing::Test {
 protected:
  std::string Write(const std::string& name, const tests::Bytes& bytes) {
    tests::WriteBytes(directory.File(name), bytes);
    return directory.File(name);
  }

  // Through the registry; and it is this reader that opens the file.
  void ExpectFacts(const std::string& path, unsigned long frequency, int channels,
                   const char* encoding) {
    ASSERT_EQ(MediaFileOpen(path.c_str(), file), QVERR_OK) << path;
    EXPECT_EQ(tests::WideDescription(*file), kFormat);
    EXPECT_EQ(file->GetSamplingFrequency(), frequency);
    EXPECT_EQ(file->GetTrackChannelCount(), channels);
    char text[64];
    file->GetFormatDescription(text, sizeof text);
    EXPECT_STREQ(text, encoding);
    ASSERT_EQ(file->SelectChannels(nullptr, 0, kChannelModeSeparate), QVERR_OK);
  }

  // Three channels: the reader before this one takes two at most.
  static tests::WavBytes ALaw() {
    tests::WavBytes wav;
    wav.tag = 6;
    wav.channels = wav.blockAlign = 3;
    wav.bits = 8;
    wav.data = "abcdef";
    return wav;
  }

  // The frames of the fixture, in one channel, and their samples.
  static tests::WavBytes G729A() {
    const tests::Bytes frames = tests::ReadBytes(tests::Fixture("g729a_bcg729.g729a"));
    tests::WavBytes wav;
    wav.tag = 0x83;
    wav.blockAlign = 10;
    wav.data.assign(frames.begin(), frames.end());
    return wav;
  }
  std::vector<short> G729ASamples() {
    const std::string path = tests::Fixture("g729a_bcg729.g729a");
    const QVERRORCODE_TAG result = MediaFileOpen(path.c_str(), file);
    EXPECT_EQ(result, QVERR_OK);
    return result == QVERR_OK ? tests::PullAll(*file) : std::vector<short>();
  }
  // The mixed frames of the fixture.
  static tests::WavBytes G7231() {
    const tests::Bytes frames = tests::ReadBytes(tests::Fixture("g723_1_mixed.g723_1"));
    tests::WavBytes wav;
    wav.tag = 0x42;
    wav.blockAlign = 24;
    wav.data.assign(frames.begin(), frames.end());
    return wav;
  }
  std::vector<short> Pull(const tests::WavBytes& wav, int channels,
                          const char* encoding = "ITU-T G.729A 8 kbit/s") {
    ExpectFacts(Write("x.wav", wav.ToBytes()), 8000, channels, encoding);
    if (HasFatalFailure()) return {};
    std::vector<short> samples = tests::PullAll(*file);
    EXPECT_EQ(file->GetMilliseconds(), samples.size() / static_cast<unsigned>(channels) / 8);
    return samples;
  }

  const std::vector<short> expandedALaw = tests::ReadSamples(tests::Fixture("g711_alaw.s16"));
  const std::vector<short> expandedMuLaw = tests::ReadSamples(tests::Fixture("g711_mulaw.s16"));
  const tests::TemporaryDirectory directory;
  MediaFilePtr file;
};

TEST_F(AUD, G722ThatFFmpegEncoded) {
  const std::string path = tests::Fixture("g722_ffmpeg.g722");
  ASSERT_NO_FATAL_FAILURE(ExpectFacts(path, 16'000, 1, "CCITT G.722 64 kbit/s"));
  EXPECT_EQ(file->GetMilliseconds(), 516U);
  const std::vector<short> decoded = tests::ReadSamples(tests::Fixture("g722_ffmpeg.s16"));
  EXPECT_EQ(tests::PullAll(*file), decoded);
  ASSERT_EQ(MediaFileOpen(path.c_str(), file), QVERR_OK);
  EXPECT_EQ(tests::BlockSizes(*file), (std::vector<unsigned long>{8000, 256})) << "whole frames";
  tests::Bytes begin = tests::ReadBytes(path);
  begin.resize(100);  // no whole frames, and less than a block
  ASSERT_NO_FATAL_FAILURE(ExpectFacts(Write("x.g722", begin), 16'000, 1, "CCITT G.722 64 kbit/s"));
  EXPECT_EQ(tests::PullAll(*file), std::vector<short>(decoded.begin(), decoded.begin() + 200));
}

// The decoder of ffmpeg is not exact.
TEST_F(AUD, G729AThatAnotherProgramEncoded) {
  ASSERT_NO_FATAL_FAILURE(
      ExpectFacts(tests::Fixture("g729a_bcg729.g729a"), 8000, 1, "ITU-T G.729A 8 kbit/s"));
  EXPECT_EQ(file->GetMilliseconds(), 400U);
  const std::vector<short> samples = tests::PullAll(*file);
  const std::vector<short> decoded = tests::ReadSamples(tests::Fixture("g729a_ffmpeg.s16"));
  ASSERT_EQ(samples.size(), decoded.size());
  EXPECT_GT(tests::Correlation(samples, decoded), 0.99);
  EXPECT_NEAR(tests::Level(samples) / tests::Level(decoded), 1, 0.05);
}

// A header counts the samples of the last frame, which is filled up. What it says is not believed
// when the data does not end within that frame.
TEST_F(AUD, G729AInWaveFilesIsAsLongAsTheyTell) {
  const std::vector<short> samples = G729ASamples();
  ASSERT_EQ(samples.size(), 3200U);
  struct Case {
    std::size_t bytes;
    std::uint32_t told;
    std::size_t samples;
  };
  for (const Case& c : {Case{400, 3200, 3200},
                        {400, 3121, 3121},
                        {400, 3120, 3200},
                        {400, 3201, 3200},
                        {400, 0, 3200},
                        {395, 3200, 3160},
                        {395, 3121, 3121},
                        {10, 1, 1},
                        {0, 0, 0}}) {
    tests::WavBytes wav = G729A();
    wav.data.resize(c.bytes);
    const std::string fact = tests::WavBytes::Chunk("fact", tests::WavBytes::Number(c.told, 4));
    for (const bool isBehind : {false, true}) {
      wav.beforeData = isBehind ? "" : fact;
      wav.afterData = isBehind ? std::string(c.bytes % 2, '\0') + fact : "";
      wav.bits = c.told % 3 * 8;  // which nobody agrees upon
      wav.bytesPerSecond = c.told % 2 == 0 ? -1 : 0;
      const std::vector<short> read = Pull(wav, 1);
      ASSERT_EQ(read.size(), c.samples) << c.bytes << " bytes, " << c.told;
      // Of a part of a frame nobody knows.
      const std::size_t whole = std::min(c.samples, c.bytes / 10 * 80);
      EXPECT_TRUE(std::equal(read.begin(), read.begin() + std::ptrdiff_t(whole), samples.begin()));
    }
  }
}

// Speech on one side and silence on the other; then the same speech, but later.
TEST_F(AUD, TheFramesOfStereoG729AAlternate) {
  const std::vector<short> speech = G729ASamples();
  const std::string frames = G729A().data;
  for (const std::size_t delay : {frames.size() / 10, std::size_t{7}}) {
    for (const std::size_t side : {0U, 1U}) {
      tests::WavBytes wav = G729A();
      wav.channels = 2;
      wav.blockAlign = 20;
      wav.data.clear();
      std::vector<short> expected(speech.size() * 2);
      const std::string late = std::string(delay * 10, '\0') + frames;
      for (std::size_t i = 0; i < frames.size(); i += 10) {
        wav.data += (side == 0 ? frames : late).substr(i, 10);
        wav.data += (side == 0 ? late : frames).substr(i, 10);
      }
      for (std::size_t i = 0; i < speech.size(); ++i) {
        expected[2 * i + side] = speech[i];
        if (i >= delay * 80) expected[2 * i + 1 - side] = speech[i - delay * 80];
      }
      EXPECT_EQ(Pull(wav, 2), expected) << delay << " frames later, side " << side;
      // Cut within the frame of the second side, and of the first: each byte still counts.
      wav.data.resize(wav.data.size() - 4);
      EXPECT_EQ(Pull(wav, 2).size(), expected.size() - 32);
      wav.data.resize(wav.data.size() - 8);
      const std::vector<short> cut = Pull(wav, 2);
      ASSERT_EQ(cut.size(), expected.size() - 96);
      // The last 32 frames are of the first side's begun frame. The second side has none.
      for (std::size_t i = cut.size() - 64; i < cut.size(); i += 2) EXPECT_EQ(cut[i + 1], 0) << i;
    }
  }
}

// All four kinds of frames. The decoder of ffmpeg is exact here.
TEST_F(AUD, G7231OfMixedFramesThatFFmpegDecodes) {
  ASSERT_NO_FATAL_FAILURE(
      ExpectFacts(tests::Fixture("g723_1_mixed.wav"), 8000, 1, "ITU-T G.723.1"));
  EXPECT_EQ(file->GetMilliseconds(), 870U);
  EXPECT_EQ(tests::PullAll(*file), tests::ReadSamples(tests::Fixture("g723_1_mixed.s16")));
}

// Four frames of 24 bytes, four of 20, and so on; 29 of 240 samples.
TEST_F(AUD, G7231IsAsLongAsItsFramesOrAsItTells) {
  const auto samples = tests::ReadSamples(tests::Fixture("g723_1_mixed.s16"));
  struct Case {
    std::size_t bytes;
    int told;  // -1: nothing
    std::size_t samples;
    std::size_t whole;  // those of whole frames
  };
  const Case cases[] = {{523, 6960, 6960, 6960}, {523, 6721, 6721, 6721}, {523, 6720, 6960, 6960},
                        {523, 6961, 6960, 6960}, {96, 1152, 960, 960},    {48, 480, 480, 480},
                        {48, 241, 241, 241},     {48, 240, 480, 480},     {0, 0, 0, 0},
                        {523, -1, 6960, 6960},   {521, -1, 6660, 6480},   {425, -1, 5040, 5040},
                        {421, -1, 4620, 4560},   {177, -1, 1930, 1920},   {120, -1, 1248, 1200},
                        {110, -1, 1128, 960},    {1, -1, 10, 0},          {523, 5230, 6960, 6960}};
  for (const Case& c : cases) {
    for (const unsigned variant : {0U, 1U, 2U, 3U}) {
      SCOPED_TRACE(testing::Message() << c.bytes << " bytes, " << c.told << ", " << variant);
      tests::WavBytes wav = G7231();
      wav.tag = variant % 2 == 0 ? 0x22 : 0x42;
      wav.blockAlign = variant / 2 == 0 ? 20 : 24;
      wav.bytesPerSecond = variant == 0 ? 662 : 0;
      wav.data.resize(c.bytes);
      if (c.told < 0) {
        wav.dataSize = 0;  // not known
      } else {
        const auto told = static_cast<std::uint64_t>(c.told);
        wav.afterData = std::string(c.bytes % 2, '\0') +
                        tests::WavBytes::Chunk("fact", tests::WavBytes::Number(told, 4));
      }
      const std::vector<short> read = Pull(wav, 1, "ITU-T G.723.1");
      ASSERT_EQ(read.size(), c.samples);
      EXPECT_TRUE(
          std::equal(samples.begin(), samples.begin() + std::ptrdiff_t(c.whole), read.begin()));
    }
  }
}

// A block that is refused, and a file that shrinks to the beginning of a frame.
TEST_F(AUD, G7231KeepsInStepWithItsFrames) {
  const std::string path = Write("x.wav", G7231().ToBytes());
  ASSERT_EQ(MediaFileOpen(path.c_str(), file), QVERR_OK);
  const std::vector<unsigned long> sizes = tests::BlockSizes(*file);
  ASSERT_EQ(sizes.size(), 5U);
  ASSERT_EQ(MediaFileOpen(path.c_str(), file), QVERR_OK);
  const short* samples = nullptr;
  unsigned long frames = 0;
  EXPECT_EQ(file->ReadBlock(samples, frames), QVERR_OK);
  InitializeMediaAccessorLibrary("a licensee", "");
  EXPECT_EQ(file->ReadBlock(samples, frames), QVERR_NOT_LICENSED);
  InitializeMediaAccessorLibrary("", "");
  EXPECT_EQ(tests::BlockSizes(*file), std::vector<unsigned long>(sizes.begin() + 2, sizes.end()));
  ASSERT_EQ(MediaFileOpen(path.c_str(), file), QVERR_OK);
  std::filesystem::resize_file(path, 44 + 23);
  EXPECT_EQ(file->ReadBlock(samples, frames), QVERR_FILE_IO);
}

TEST_F(AUD, EveryCodeWordOfRawG711) {
  tests::Bytes codes;
  for (int code = 0; code < 256; ++code) codes.push_back(static_cast<unsigned char>(code));
  ASSERT_NO_FATAL_FAILURE(ExpectFacts(Write("x.alaw", codes), 8000, 1, "CCITT A-Law"));
  EXPECT_EQ(file->GetMilliseconds(), 32U);
  EXPECT_EQ(tests::PullAll(*file), expandedALaw);
  ASSERT_NO_FATAL_FAILURE(ExpectFacts(Write("x.MuLaW", codes), 8000, 1, "CCITT u-Law"));
  EXPECT_EQ(tests::PullAll(*file), expandedMuLaw);
}

TEST_F(AUD, WaveFilesGoByTheirTagWhateverTheirExtension) {
  tests::WavBytes wav = ALaw();
  wav.frequency = 4;
  wav.afterData = "no audio";
  std::vector<short> expected;
  for (const char code : wav.data) expected.push_back(expandedALaw[static_cast<std::size_t>(code)]);
  for (const char* name : {"x.wav", "x.g722", "x.mulaw"}) {
    ASSERT_NO_FATAL_FAILURE(ExpectFacts(Write(name, wav.ToBytes()), 4, 3, "CCITT A-Law"));
    EXPECT_EQ(file->GetMilliseconds(), 500U);
    EXPECT_EQ(tests::PullAll(*file), expected) << name;
  }
  wav.tag = 7;
  // A format that is not the first chunk.
  wav.beforeFormat = tests::WavBytes::Chunk("LIST", "some");
  ASSERT_NO_FATAL_FAILURE(ExpectFacts(Write("x.wav", wav.ToBytes()), 4, 3, "CCITT u-Law"));
  EXPECT_EQ(tests::PullAll(*file)[5], expandedMuLaw['f']);
}

TEST_F(AUD, BlocksOfTheMostChannelsStaySmall) {
  tests::WavBytes wav = ALaw();
  wav.channels = wav.blockAlign = 0xFFFF;
  wav.data.assign(std::size_t{0xFFFF} * 2, 'a');
  ASSERT_EQ(MediaFileOpen(Write("x.wav", wav.ToBytes()).c_str(), file), QVERR_OK);
  EXPECT_EQ(tests::BlockSizes(*file), (std::vector<unsigned long>{1, 1}));
}

TEST_F(AUD, NothingIsAFileOfNoFrames) {
  ASSERT_NO_FATAL_FAILURE(ExpectFacts(Write("x.g722", {}), 16'000, 1, "CCITT G.722 64 kbit/s"));
  EXPECT_EQ(file->GetMilliseconds(), 0U);
  EXPECT_EQ(tests::PullAll(*file), std::vector<short>{});
}

TEST_F(AUD, RefusesWhatItDoesNotTake) {
  tests::WavBytes pcm = ALaw();
  pcm.tag = 1;
  tests::WavBytes wide = ALaw();
  wide.bits = 16;
  tests::WavBytes narrow = ALaw();
  narrow.bits = 4;
  tests::WavBytes lies = ALaw();
  lies.blockAlign = 6;
  tests::WavBytes noRate = ALaw();
  noRate.frequency = 0;
  tests::WavBytes threeSides = G729A();
  threeSides.channels = 3;
  threeSides.blockAlign = 30;
  tests::WavBytes oneSide = G729A();
  oneSide.channels = 2;
  tests::WavBytes shortFrames = G729A();
  shortFrames.blockAlign = 8;
  tests::WavBytes twoSides = G7231();
  twoSides.channels = 2;
  twoSides.blockAlign = 48;
  tests::WavBytes oddFrames = G7231();
  oddFrames.blockAlign = 12;
  tests::Bytes noData = ALaw().ToBytes();
  noData.resize(noData.size() - 14);  // "data", its size, 6 bytes
  const tests::Bytes other = {'A', 'U', 'D', ' ', 0, 0, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8};
  const std::string names[] = {Write("pcm.wav", pcm.ToBytes()),
                               Write("wide.wav", wide.ToBytes()),
                               Write("narrow.wav", narrow.ToBytes()),
                               Write("lies.wav", lies.ToBytes()),
                               Write("three.wav", threeSides.ToBytes()),
                               Write("one.wav", oneSide.ToBytes()),
                               Write("short.wav", shortFrames.ToBytes()),
                               Write("two.wav", twoSides.ToBytes()),
                               Write("odd.wav", oddFrames.ToBytes()),
                               tests::Fixture("truespeech_mono.wav"),
                               Write("data.wav", noData),
                               Write("rate.g722", noRate.ToBytes()),
                               Write("other.wav", other),
                               Write("g722", other),
                               Write("x.g722.aud", other)};
  const CMediaFileFactory* factory = nullptr;
  bool isDefault = false;
  ASSERT_EQ(MediaAccessorRegistryGetFactory("g722", 0, factory, isDefault), QVERR_OK);
  file.reset(factory->CreateMediaFile());
  for (const std::string& name : names)
    EXPECT_EQ(file->Open(name.c_str()), QVERR_BAD_FORMAT) << name;
  const std::string name = directory.File("directory.g722");
  std::filesystem::create_directory(name);
  EXPECT_EQ(file->Open(name.c_str()), QVERR_FILE_OPEN_FAILED);
}

}  // namespace
