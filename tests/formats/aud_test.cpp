// The reader of raw frames and speech-coded wave files against other programs, and what it refuses.
#include <MediaAccessor/all.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/fake_media.h"
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

  const std::vector<short> expandedALaw = tests::ReadSamples(tests::Fixture("g711_alaw.s16"));
  const std::vector<short> expandedMuLaw = tests::ReadSamples(tests::Fixture("g711_mulaw.s16"));
  const tests::TemporaryDirectory directory;
  MediaFilePtr file;
};

TEST_F(AUD, G722ThatFFmpegEncoded) {
  const std::string path = tests::Fixture("g722_ffmpeg.g722");
  ExpectFacts(path, 16'000, 1, "CCITT G.722 64 kbit/s");
  EXPECT_EQ(file->GetMilliseconds(), 516U);
  const std::vector<short> decoded = tests::ReadSamples(tests::Fixture("g722_ffmpeg.s16"));
  EXPECT_EQ(tests::PullAll(*file), decoded);
  ASSERT_EQ(MediaFileOpen(path.c_str(), file), QVERR_OK);
  EXPECT_EQ(tests::BlockSizes(*file), (std::vector<unsigned long>{8000, 256})) << "whole frames";
  tests::Bytes begin = tests::ReadBytes(path);
  begin.resize(100);  // no whole frames, and less than a block
  ExpectFacts(Write("x.g722", begin), 16'000, 1, "CCITT G.722 64 kbit/s");
  EXPECT_EQ(tests::PullAll(*file), std::vector<short>(decoded.begin(), decoded.begin() + 200));
}

TEST_F(AUD, EveryCodeWordOfRawG711) {
  tests::Bytes codes;
  for (int code = 0; code < 256; ++code) codes.push_back(static_cast<unsigned char>(code));
  ExpectFacts(Write("x.alaw", codes), 8000, 1, "CCITT A-Law");
  EXPECT_EQ(file->GetMilliseconds(), 32U);
  EXPECT_EQ(tests::PullAll(*file), expandedALaw);
  ExpectFacts(Write("x.MuLaW", codes), 8000, 1, "CCITT u-Law");
  EXPECT_EQ(tests::PullAll(*file), expandedMuLaw);
}

TEST_F(AUD, WaveFilesGoByTheirTagWhateverTheirExtension) {
  tests::WavBytes wav = ALaw();
  wav.frequency = 4;
  wav.afterData = "no audio";
  std::vector<short> expected;
  for (const char code : wav.data) expected.push_back(expandedALaw[static_cast<std::size_t>(code)]);
  for (const char* name : {"x.wav", "x.g722", "x.mulaw"}) {
    ExpectFacts(Write(name, wav.ToBytes()), 4, 3, "CCITT A-Law");
    EXPECT_EQ(file->GetMilliseconds(), 500U);
    EXPECT_EQ(tests::PullAll(*file), expected) << name;
  }
  wav.tag = 7;
  // A format that is not the first chunk.
  wav.beforeFormat = tests::WavBytes::Chunk("LIST", "some");
  ExpectFacts(Write("x.wav", wav.ToBytes()), 4, 3, "CCITT u-Law");
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
  ExpectFacts(Write("x.g722", {}), 16'000, 1, "CCITT G.722 64 kbit/s");
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
  tests::Bytes noData = ALaw().ToBytes();
  noData.resize(noData.size() - 14);  // "data", its size, 6 bytes
  const tests::Bytes other = {'A', 'U', 'D', ' ', 0, 0, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8};
  const std::string names[] = {Write("pcm.wav", pcm.ToBytes()),
                               Write("wide.wav", wide.ToBytes()),
                               Write("narrow.wav", narrow.ToBytes()),
                               Write("lies.wav", lies.ToBytes()),
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
