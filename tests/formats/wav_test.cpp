// The wave engine: files that other programs wrote, in every coding, and files that lie.
#include <MediaAccessor/all.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <ostream>
#include <string>
#include <vector>

#include "tests/fake_media.h"
#include "tests/test_files.h"
#include "tests/test_system.h"
#include "tests/wav_bytes.h"

namespace {

using namespace Quorvex;
using tests::WavBytes;

constexpr int kNotOffered = -1;

// What the compression manager of each system makes of a coding.
struct CodingCase {
  const char* name;  // of the fixture, whose samples are in a file beside it
  int channels;      // delivered
  const wchar_t* encoding;
  int onLinux;    // how far samples may be from the expected ones, or kNotOffered
  int onWindows;  // the same for Wine 8
};

void PrintTo(const CodingCase& c, std::ostream* stream) { *stream << c.name; }

class WAVCoding : public testing::TestWithParam<CodingCase> {};

TEST_P(WAVCoding, IsDecodedAsByOtherPrograms) {
  const CodingCase& c = GetParam();
  const int tolerance = tests::kSystemIsWindows ? c.onWindows : c.onLinux;
  const std::string path = tests::Fixture(c.name);
  const auto expected = tests::ReadSamples(path + ".s16");
  const MediaFilePtr file(CInputWAVMediaFile::CreateInstance());
  const QVERRORCODE_TAG opened = file->Open((path + ".wav").c_str());
  ASSERT_EQ(opened, tolerance == kNotOffered ? QVERR_BAD_FORMAT : QVERR_OK);
  if (tolerance == kNotOffered) return;
  EXPECT_EQ(file->GetTrackChannelCount(), c.channels);
  wchar_t encoding[64];
  file->GetFormatDescription(encoding, 64);
  EXPECT_STREQ(encoding, c.encoding);
  ASSERT_EQ(file->SelectChannels(nullptr, 0, kChannelModeSeparate), QVERR_OK);
  const auto samples = tests::PullAll(*file);
  ASSERT_EQ(samples.size(), expected.size());
  int furthest = 0;
  for (std::size_t i = 0; i < samples.size(); ++i) {
    furthest = std::max(furthest, std::abs(samples[i] - expected[i]));
  }
  EXPECT_LE(furthest, tolerance);
}

constexpr const wchar_t* kPCM = L"WAVE_FORMAT_PCM - Uncompressed Audio";
constexpr const wchar_t* kFloat = L"WAVE_FORMAT_IEEE_FLOAT - Microsoft Corporation";
constexpr const wchar_t* kExtensible = L"Unknown format";  // whatever is behind it
constexpr const wchar_t* kADPCM = L"WAVE_FORMAT_ADPCM - Microsoft Corporation";
constexpr const wchar_t* kIMA = L"WAVE_FORMAT_DVI_ADPCM - Intel Corporation";
constexpr const wchar_t* kGSM = L"WAVE_FORMAT_GSM610 - Microsoft Corporation";

// Decoders of Microsoft ADPCM do not agree: where libsndfile and sox round down, others round
// towards zero. What ffmpeg encodes they all read alike.
INSTANTIATE_TEST_SUITE_P(
    Codings, WAVCoding,
    testing::Values(
        CodingCase{"sox_pcm16_stereo", 2, kPCM, 0, 0}, CodingCase{"sox_pcm8_mono", 1, kPCM, 0, 0},
        CodingCase{"sndfile_pcm24_stereo", 2, kPCM, 0, 0},
        CodingCase{"sndfile_pcm32_stereo", 2, kPCM, 0, kNotOffered},
        CodingCase{"ffmpeg_float32_stereo", 2, kExtensible, 0, kNotOffered},
        CodingCase{"ffmpeg_float64_mono", 1, kExtensible, 0, kNotOffered},
        CodingCase{"refused_float", 1, kFloat, 0, kNotOffered},
        CodingCase{"sox_pcm24_three_channels", 2, kExtensible, 0, kNotOffered},
        CodingCase{"sox_alaw_stereo", 2, L"WAVE_FORMAT_ALAW - Microsoft Corporation", 0, 0},
        CodingCase{"sox_mulaw_mono", 1, L"WAVE_FORMAT_MULAW - Microsoft Corporation", 0, 0},
        CodingCase{"sndfile_ima_mono", 1, kIMA, 0, 0}, CodingCase{"sox_ima_stereo", 2, kIMA, 0, 0},
        CodingCase{"sndfile_ms_adpcm_stereo", 2, kADPCM, 0, 256},
        CodingCase{"sox_ms_adpcm_mono", 1, kADPCM, 0, 256},
        CodingCase{"ffmpeg_ms_adpcm_stereo", 2, kADPCM, 0, 0},
        CodingCase{"sox_gsm_mono", 1, kGSM, 0, 0}, CodingCase{"ffmpeg_gsm610", 1, kGSM, 0, 0},
        CodingCase{"ffmpeg_g726_24k", 1, L"Unknown format", 0, kNotOffered},
        CodingCase{"ffmpeg_ac3", 1, L"WAVE_FORMAT_DVM - FAST Multimedia AG", 0, kNotOffered},
        CodingCase{"ffmpeg_mp3", 2, L"WAVE_FORMAT_MPEGLAYER3 - ISO/MPEG Layer3 Format Tag", 0, 2},
        CodingCase{"truespeech_mono", 1, L"WAVE_FORMAT_DSPGROUP_TRUESPEECH - DSP Group, Inc", 0,
                   kNotOffered}),
    [](const auto& test) { return std::string(test.param.name); });

// A file is taken by the first reader that can: the engine is behind the portable one, where the
// system has no readers of its own.
TEST(WAV, IsTriedLastWhereItIsRegistered) {
  MediaFilePtr file;
  ASSERT_EQ(MediaFileOpen(tests::Fixture("sox_pcm8_mono.wav").c_str(), file), QVERR_OK);
  EXPECT_EQ(tests::WideDescription(*file), L"Portable WAV Format");
  const QVERRORCODE_TAG opened = MediaFileOpen(tests::Fixture("sox_gsm_mono.wav").c_str(), file);
  ASSERT_EQ(opened, tests::kSystemIsWindows ? QVERR_BAD_FORMAT : QVERR_OK);
  if (opened == QVERR_OK) {
    EXPECT_EQ(tests::WideDescription(*file), L"Microsoft WAV Format");
  }
}

class WAVBytesTest : public testing::Test {
 protected:
  QVERRORCODE_TAG Open(tests::Bytes bytes) {
    const std::string path = directory.File("x.wav");
    file->Close();
    tests::WriteBytes(path, bytes);
    return file->Open(path.c_str());
  }
  std::size_t FrameCount() { return tests::PullAll(*file).size(); }

  const tests::TemporaryDirectory directory;
  const MediaFilePtr file{CInputWAVMediaFile::CreateInstance()};
};

constexpr std::size_t kFourFrames = 4;

struct WalkCase {
  const char* what;
  void (*change)(WavBytes& wav);
  QVERRORCODE_TAG result = QVERR_OK;
  std::size_t frames = kFourFrames;
};

std::string Fact(std::uint32_t count) {
  return WavBytes::Chunk("fact", WavBytes::Number(count, 4));
}
std::string OddChunk() { return WavBytes::Chunk("LIST", "abc") + std::string(1, '\0'); }

TEST_F(WAVBytesTest, TheWalkThroughTheChunks) {
  const WalkCase cases[] = {
      {"as it should be", [](WavBytes&) {}},
      {"odd chunks, padded, everywhere",
       [](WavBytes& wav) { wav.beforeFormat = wav.beforeData = wav.afterData = OddChunk(); }},
      {"an odd chunk without its pad byte: the next header is a byte late",
       [](WavBytes& wav) { wav.beforeData = WavBytes::Chunk("LIST", "abc"); }, QVERR_BAD_FORMAT},
      {"a format of 4,096 bytes", [](WavBytes& wav) { wav.formatSize = 4096; }},
      {"one of 4,097", [](WavBytes& wav) { wav.formatSize = 4097; }, QVERR_BAD_FORMAT},
      {"two formats", [](WavBytes& wav) { wav.afterData = wav.FormatChunk(); }, QVERR_BAD_FORMAT},
      {"two stretches of data",
       [](WavBytes& wav) { wav.afterData = WavBytes::Chunk("data", "1234"); }, QVERR_BAD_FORMAT},
      {"two counts", [](WavBytes& wav) { wav.beforeData = Fact(4) + Fact(4); }, QVERR_BAD_FORMAT},
      {"a count too short to be one before another",
       [](WavBytes& wav) { wav.beforeData = WavBytes::Chunk("fact", "ab") + Fact(4); }},
      {"a count behind the data", [](WavBytes& wav) { wav.afterData = Fact(4); }},
      {"no data", [](WavBytes& wav) { wav.dataSize = 0, wav.data = ""; }, QVERR_OK, 0},
      {"data cut off", [](WavBytes& wav) { wav.dataSize = 9; }, QVERR_FILE_IO},
      {"data of 4 GiB", [](WavBytes& wav) { wav.dataSize = 0xFFFFFFFF; }, QVERR_FILE_IO},
      {"a tail that is no frame", [](WavBytes& wav) { wav.data.push_back('x'); }},
      {"another form type", [](WavBytes& wav) { wav.wave = "WAVX"; }, QVERR_BAD_FORMAT},
      {"not RIFF", [](WavBytes& wav) { wav.riff = "RIFX"; }, QVERR_BAD_FORMAT},
      {"no channels", [](WavBytes& wav) { wav.channels = 0; }, QVERR_BAD_FORMAT},
      {"no rate", [](WavBytes& wav) { wav.frequency = 0; }, QVERR_BAD_FORMAT},
      {"no alignment", [](WavBytes& wav) { wav.blockAlign = 0; }},
      {"65,535 channels", [](WavBytes& wav) { wav.channels = 0xFFFF; }, QVERR_OK, 0},
      {"a coding that nobody has", [](WavBytes& wav) { wav.tag = 0x7777; }, QVERR_BAD_FORMAT},
  };
  for (const WalkCase& c : cases) {
    WavBytes wav;
    wav.bits = 16;
    c.change(wav);
    EXPECT_EQ(Open(wav.ToBytes()), c.result) << c.what;
    if (c.result == QVERR_OK) {
      EXPECT_EQ(FrameCount(), c.frames) << c.what;
    }
  }
}

// Nothing behind the end of the RIFF chunk counts, and it need not come first.
TEST_F(WAVBytesTest, TheSizeAndPlaceOfTheRIFFChunk) {
  WavBytes wav;
  wav.bits = 16;
  const auto withSize = [&wav](std::uint32_t size) {
    tests::Bytes bytes = wav.ToBytes();
    for (std::size_t i = 0; i < 4; ++i) bytes[4 + i] = static_cast<std::uint8_t>(size >> (8 * i));
    return bytes;
  };
  EXPECT_EQ(Open(withSize(0xFFFFFFFF)), QVERR_OK);
  EXPECT_EQ(Open(withSize(40)), QVERR_OK) << "the header of the data chunk is within";
  EXPECT_EQ(FrameCount(), kFourFrames);
  EXPECT_EQ(Open(withSize(30)), QVERR_BAD_FORMAT) << "it is not";
  EXPECT_EQ(Open(withSize(0)), QVERR_BAD_FORMAT);
  tests::Bytes second = wav.ToBytes();
  const std::string junk = WavBytes::Chunk("JUNK", "1234");
  second.insert(second.begin(), junk.begin(), junk.end());
  EXPECT_EQ(Open(second), QVERR_OK);
  EXPECT_EQ(FrameCount(), kFourFrames);
  EXPECT_EQ(Open({'R', 'I', 'F', 'F'}), QVERR_BAD_FORMAT);
  tests::Bytes cut = wav.ToBytes();
  cut.resize(30);
  EXPECT_EQ(Open(cut), QVERR_FILE_IO) << "in the middle of the format";
}

TEST_F(WAVBytesTest, TheLengthThatTheHeaderTells) {
  struct Case {
    const char* what;
    void (*change)(WavBytes& wav);
    unsigned long milliseconds;
  };
  constexpr unsigned long kLongest = 0xFFFFFFFF;
  const Case cases[] = {
      {"PCM: of the data", [](WavBytes& wav) { wav.data.resize(16'018); }, 1001},
      {"of the count, whatever the data", [](WavBytes& wav) { wav.beforeData = Fact(12'345); },
       1543},
      {"a count of 0 is none", [](WavBytes& wav) { wav.beforeData = Fact(0); }, 0},
      {"one that does not fit",
       [](WavBytes& wav) { wav.beforeData = Fact(0xFFFFFFFF), wav.frequency = 1; }, kLongest},
      {"A-law: at its average rate",
       [](WavBytes& wav) {
         wav.tag = 6, wav.bits = 8, wav.blockAlign = 1, wav.bytesPerSecond = 4000;
         wav.data.resize(8004);
       },
       2001},
  };
  for (const Case& c : cases) {
    WavBytes wav;
    wav.bits = 16;
    c.change(wav);
    ASSERT_EQ(Open(wav.ToBytes()), QVERR_OK) << c.what;
    EXPECT_EQ(file->GetMilliseconds(), c.milliseconds) << c.what;
  }
}

TEST_F(WAVBytesTest, WhatCannotBeOpened) {
  EXPECT_EQ(file->Open(""), QVERR_BAD_FILE_NAME);
  EXPECT_EQ(file->Open(directory.File("nowhere.wav").c_str()), QVERR_FILE_NOT_FOUND);
  EXPECT_EQ(file->Open(directory.File("").c_str()), QVERR_FILE_OPEN_FAILED);
}

// The end of a file in the middle of a block: what is there of it is decoded, as sox does.
TEST_F(WAVBytesTest, APartOfAnADPCMBlock) {
  if (tests::kSystemIsWindows) GTEST_SKIP() << "the system's codecs decide that";
  constexpr std::size_t kData = 60;  // offset
  constexpr std::size_t kBlock = 256;
  struct Case {
    std::size_t bytes;
    std::ptrdiff_t frames;
  };
  // A header, ten groups of samples, and no group; behind a whole block, alone, and less.
  for (const Case& c : {Case{kBlock + 47, 505 + 81}, Case{47, 81}, Case{4, 1}, Case{3, 0}}) {
    const auto whole = tests::ReadSamples(tests::Fixture("sndfile_ima_mono.s16"));
    tests::Bytes bytes = tests::ReadBytes(tests::Fixture("sndfile_ima_mono.wav"));
    bytes.resize(kData + c.bytes);
    bytes[kData - 4] = static_cast<std::uint8_t>(c.bytes & 0xFF);
    bytes[kData - 3] = static_cast<std::uint8_t>(c.bytes >> 8);
    ASSERT_EQ(Open(bytes), QVERR_OK);
    EXPECT_EQ(tests::PullAll(*file), std::vector<short>(whole.begin(), whole.begin() + c.frames));
  }
}

// Numbers behind the format record that are wrong or too few.
TEST_F(WAVBytesTest, RecordsThatLie) {
  if (tests::kSystemIsWindows) GTEST_SKIP() << "the system's codecs decide that";
  struct Case {
    const char* fixture;
    std::size_t offset;  // of a byte to be changed
    std::uint8_t value;
    QVERRORCODE_TAG result;
    std::size_t frames;
  };
  const Case cases[] = {
      {"ffmpeg_float32_stereo", 36, 0, QVERR_BAD_FORMAT, 0},     // nothing behind an extensible one
      {"ffmpeg_float32_stereo", 59, 0x70, QVERR_BAD_FORMAT, 0},  // another GUID
      {"sndfile_ima_mono", 39, 0xFF, QVERR_OK, 3 * 505},         // more frames than a block holds
      {"sndfile_ima_mono", 39, 0, QVERR_OK, 3 * 249},            // fewer
      {"sox_ms_adpcm_mono", 40, 0xFF, QVERR_OK, 1500},           // more predictors than there are
  };
  for (const Case& c : cases) {
    tests::Bytes bytes = tests::ReadBytes(tests::Fixture(std::string(c.fixture) + ".wav"));
    bytes[c.offset] = c.value;
    EXPECT_EQ(Open(bytes), c.result) << c.fixture << c.offset;
    if (c.result == QVERR_OK) {
      EXPECT_EQ(FrameCount(), c.frames) << c.fixture << c.offset;
    }
  }
}

}  // namespace
