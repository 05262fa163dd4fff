// The wave engine itself: what no public class reaches.
#include "formats/wav/wav_media_file.h"

#include <MediaAccessor/library.h>
#include <MediaAccessor/wav_file_writer.h>
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <string>
#include <thread>

#include "codecs/speech_coder.h"
#include "formats/wav/output_wav_media_file.h"
#include "platform/text.h"
#include "tests/codecs/fake_engine.h"
#include "tests/test_files.h"
#include "tests/wav_bytes.h"

namespace {

using namespace Quorvex;
using tests::WavBytes;

class WAVEngine : public testing::Test {
 protected:
  QVERRORCODE_TAG Open(int mode) { return engine.Open(platform::Widen(path).c_str(), mode); }

  const tests::TemporaryDirectory directory;
  const std::string path = directory.File("x.wav");
  CWAVMediaFileImpl engine;
};

constexpr int kRead = CWAVMediaFileImpl::kModeRead;
constexpr int kWrite = CWAVMediaFileImpl::kModeWrite;

TEST_F(WAVEngine, Modes) {
  const short* samples = nullptr;
  unsigned long frames = 0;
  EXPECT_EQ(engine.Read(samples, frames), QVERR_FILE_NOT_OPEN);
  EXPECT_EQ(engine.Write(nullptr, 0), QVERR_INVALID_ARGUMENT);
  for (const int mode : {0, 2, 9, 11, -1}) EXPECT_EQ(Open(mode), QVERR_INVALID_ARGUMENT);
  EXPECT_EQ(engine.Open(L"", kRead), QVERR_BAD_FILE_NAME);
  EXPECT_EQ(Open(kRead), QVERR_FILE_NOT_FOUND);
  engine.SetOutput(kWaveTagPCM, 1, 8000);
  ASSERT_EQ(Open(kWrite), QVERR_OK);
  EXPECT_EQ(Open(kWrite), QVERR_ALREADY_OPEN);
  EXPECT_EQ(engine.Read(samples, frames), QVERR_BAD_STATE);
  EXPECT_EQ(engine.Close(), QVERR_OK);
  ASSERT_EQ(Open(kRead), QVERR_OK);
  EXPECT_EQ(engine.Write(nullptr, 0), QVERR_INVALID_ARGUMENT);
  EXPECT_EQ(engine.Close(), QVERR_OK);
}

// The record and what follows, up to the data chunk. The numbers of TrueSpeech are wanted.
TEST_F(WAVEngine, HeadersOfTheSpeechCodings) {
  struct Case {
    std::uint16_t tag;
    std::uint16_t channels;
    std::uint32_t bytesPerSecond;
    std::uint32_t blockAlign;
  };
  for (const Case& c : {Case{kWaveTagG729A, 2, 2000, 20}, Case{kWaveTagTrueSpeech, 1, 662, 20}}) {
    engine.SetOutput(c.tag, c.channels, 8000);
    ASSERT_EQ(Open(kWrite), QVERR_OK);
    EXPECT_EQ(engine.Write(nullptr, 0), QVERR_INVALID_ARGUMENT) << "it has no encoder";
    EXPECT_EQ(engine.WriteCoded("frame", 5, 80), QVERR_OK);
    ASSERT_EQ(engine.Close(), QVERR_OK);
    const std::string format = WavBytes::Number(c.tag, 2) + WavBytes::Number(c.channels, 2) +
                               WavBytes::Number(8000, 4) + WavBytes::Number(c.bytesPerSecond, 4) +
                               WavBytes::Number(c.blockAlign, 2) + WavBytes::Number(1, 2) +
                               WavBytes::Number(0, 2);
    const std::string body = "WAVE" + WavBytes::Chunk("fmt ", format) +
                             WavBytes::Chunk("data", "frame") + std::string(1, '\0') +
                             WavBytes::Chunk("fact", WavBytes::Number(80, 4));
    const std::string file = WavBytes::Chunk("RIFF", body);
    EXPECT_EQ(tests::ReadBytes(path), tests::Bytes(file.begin(), file.end()));
  }
}

TEST_F(WAVEngine, WhatItRefusesToWriteLeavesTheFileAlone) {
  tests::WriteBytes(path, {'o', 'l', 'd'});
  engine.SetOutput(kWaveTagTrueSpeech, 2, 8000);
  EXPECT_EQ(Open(kWrite), QVERR_MONO_ONLY);
  engine.SetOutput(0x7777, 1, 8000);
  EXPECT_EQ(Open(kWrite), QVERR_BAD_FORMAT);
  engine.SetOutput(kWaveTagGSM610, 2, 8000);
  EXPECT_EQ(Open(kWrite), QVERR_BAD_FORMAT);
  EXPECT_EQ(std::filesystem::file_size(path), 3U);
  engine.SetOutput(kWaveTagPCM, 1, 8000);
  const std::string missing = directory.File("missing/x.wav");
  EXPECT_EQ(engine.Open(platform::Widen(missing).c_str(), kWrite), QVERR_FILE_WRITE_FAILED);
  EXPECT_EQ(engine.Open(platform::Widen(directory.File("")).c_str(), kWrite),
            QVERR_FILE_WRITE_FAILED);
  EXPECT_TRUE(std::filesystem::exists(directory.File(""))) << "it was not ours to delete";
}

TEST_F(WAVEngine, NothingIsLeftOfAnAbandonedFile) {
  const short samples[3] = {};
  engine.SetOutput(kWaveTagALaw, 1, 8000);
  ASSERT_EQ(Open(kWrite), QVERR_OK);
  EXPECT_EQ(engine.Write(samples, 3), QVERR_OK);
  engine.Abandon();
  EXPECT_FALSE(std::filesystem::exists(path));
  ASSERT_EQ(Open(kWrite), QVERR_OK);
  EXPECT_EQ(engine.Close(), QVERR_OK);
  EXPECT_EQ(std::filesystem::file_size(path), 12U + 26U + 8U + 12U);
}

TEST_F(WAVEngine, AReadWaitsWhileTheEngineIsBusy) {
  WavBytes wav;
  wav.bits = 16;
  tests::WriteBytes(path, wav.ToBytes());
  ASSERT_EQ(Open(kRead), QVERR_OK);
  std::atomic<bool> isRead = false;
  engine.SetBusy(true);
  std::thread reader([&] {
    const short* samples = nullptr;
    unsigned long frames = 0;
    EXPECT_EQ(engine.Read(samples, frames), QVERR_OK);
    EXPECT_EQ(frames, 4U);
    isRead = true;
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(120));
  EXPECT_FALSE(isRead);
  engine.SetBusy(false);
  reader.join();
  EXPECT_TRUE(isRead);
}

TEST_F(WAVEngine, TheOutputsOrderOfRefusals) {
  COutputWAVMediaFileImpl output;
  EXPECT_EQ(output.Open(path.c_str(), false), QVERR_INVALID_ARGUMENT);
  EXPECT_EQ(output.Open(path.c_str(), true), QVERR_NO_SAMPLING_FREQUENCY);
  EXPECT_FALSE(std::filesystem::exists(path));
  EXPECT_EQ(output.SetSamplingFrequency(8000), QVERR_OK);
  ASSERT_EQ(output.Open(path.c_str(), true), QVERR_OK);
  EXPECT_EQ(output.Open(path.c_str(), true), QVERR_ALREADY_OPEN);
  EXPECT_EQ(output.Open(path.c_str(), false), QVERR_INVALID_ARGUMENT);
  EXPECT_EQ(output.SetOutputCoding(-1), QVERR_ALREADY_OPEN);
  EXPECT_EQ(output.SetSamplingFrequency(1), QVERR_ALREADY_OPEN);
  EXPECT_EQ(output.SetChannelCount(1), QVERR_ALREADY_OPEN);
  output.Abandon();
  EXPECT_FALSE(std::filesystem::exists(path));
}

// The speech codings of the output, over engines that code a frame as its first sample.
class SpeechOutput : public WAVEngine {
 protected:
  static IPPEncoder* Make(IPPCoder::CODEC codec) {
    ++made;
    return fails && made % 2 == 0 ? nullptr : MakeEncoder(codec, tests::FakeEngineOf(codec));
  }

  SpeechOutput() { made = 0, fails = false, tests::engineRecord = {}; }
  ~SpeechOutput() override { InitializeMediaAccessorLibrary("", ""); }

  void Open(std::uint16_t channels, std::uint32_t frequency) {
    output.SetChannelCount(channels);
    output.SetSamplingFrequency(frequency);
    ASSERT_EQ(output.Open(path.c_str(), true), QVERR_OK);
  }

  inline static int made = 0;
  inline static bool fails = false;  // to make the second of two
  COutputWAVMediaFileImpl output{&Make};
};

// Byte for byte, whatever the samples are cut into. The first file does not show in the second.
TEST_F(SpeechOutput, G729AOfOneAndTwoChannels) {
  constexpr std::size_t kFrames = 5000;
  constexpr std::size_t kBlocks = 63;  // of 80, the last one for 40
  ASSERT_EQ(output.SetOutputCoding(kWAVOutputG729A), QVERR_OK);
  for (const std::uint16_t channels : {std::uint16_t{1}, std::uint16_t{2}}) {
    tests::engineRecord = {};
    std::vector<short> samples;
    std::string data;
    for (std::size_t i = 0; i < kFrames; ++i) {
      for (unsigned c = 0; c < channels; ++c) {
        samples.push_back(static_cast<short>(i / 80 + 100 * c));
        if (i % 80 == 0) data += std::string(10, static_cast<char>(samples.back()));
      }
    }
    Open(channels, 8000);
    EXPECT_EQ(output.Write(samples.data(), 90), QVERR_OK);
    EXPECT_EQ(output.Write(nullptr, 0), QVERR_OK);
    EXPECT_EQ(output.Write(samples.data() + 90 * channels, kFrames - 90), QVERR_OK);
    ASSERT_EQ(output.Close(), QVERR_OK);
    const std::string format = WavBytes::Number(131, 2) + WavBytes::Number(channels, 2) +
                               WavBytes::Number(8000, 4) + WavBytes::Number(channels * 1000U, 4) +
                               WavBytes::Number(channels * 10U, 2) + WavBytes::Number(1, 2) +
                               WavBytes::Number(0, 2);
    const std::string body = "WAVE" + WavBytes::Chunk("fmt ", format) +
                             WavBytes::Chunk("data", data) +
                             WavBytes::Chunk("fact", WavBytes::Number(kFrames, 4));
    const std::string file = WavBytes::Chunk("RIFF", body);
    EXPECT_EQ(tests::ReadBytes(path), tests::Bytes(file.begin(), file.end()));
    ASSERT_EQ(tests::engineRecord.encoded.size(), kBlocks * channels);
    std::vector<short> last(80, static_cast<short>(kBlocks - 1 + 100U * (channels - 1U)));
    std::fill(last.begin() + 40, last.end(), short{0});
    EXPECT_EQ(tests::engineRecord.encoded.back(), last) << "filled up with silence";
    // A file that is left halfway.
    Open(channels, 8000);
    EXPECT_EQ(output.Write(samples.data(), 90), QVERR_OK);
    output.Abandon();
    EXPECT_FALSE(std::filesystem::exists(path));
  }
  EXPECT_EQ(made, 2);
}

TEST_F(SpeechOutput, OtherFrequenciesAreConverted) {
  const std::vector<short> samples(4411 * 2);
  ASSERT_EQ(output.SetOutputCoding(kWAVOutputG729A), QVERR_OK);
  for (const std::uint32_t frequency : {16000U, 44100U, 44100U, 6000U, 8000U}) {
    Open(2, frequency);
    EXPECT_EQ(output.Write(samples.data(), 4411), QVERR_OK);
    ASSERT_EQ(output.Close(), QVERR_OK);
    const tests::Bytes bytes = tests::ReadBytes(path);
    const std::size_t count = (4411 * 8000 + frequency - 1) / frequency;
    const std::string end = WavBytes::Chunk("fact", WavBytes::Number(count, 4));
    EXPECT_EQ(bytes[24] | bytes[25] << 8, 8000);
    ASSERT_EQ(bytes.size(), 12 + 26 + 8 + (count + 79) / 80 * 20 + 12) << frequency;
    EXPECT_TRUE(std::equal(end.rbegin(), end.rend(), bytes.rbegin(), [](char a, unsigned char b) {
      return static_cast<unsigned char>(a) == b;
    })) << frequency;
  }
}

TEST_F(SpeechOutput, WhatIsRefusedCreatesNothing) {
  ASSERT_EQ(output.SetOutputCoding(kWAVOutputG729A), QVERR_OK);
  struct Case {
    std::uint16_t channels;
    std::uint32_t frequency;
    QVERRORCODE_TAG result;
  };
  for (const Case& c : {Case{3, 8000, QVERR_UNSUPPORTED_CHANNELS},
                        {0, 8000, QVERR_BAD_CHANNEL_COUNT},
                        {1, 1'000'000, QVERR_BAD_STATE},
                        {1, 1'000'000, QVERR_BAD_STATE},  // again
                        {1, 0x80000000, QVERR_INVALID_ARGUMENT}}) {
    output.SetChannelCount(c.channels);
    output.SetSamplingFrequency(c.frequency);
    EXPECT_EQ(output.Open(path.c_str(), true), c.result);
    EXPECT_FALSE(std::filesystem::exists(path));
  }
  Open(1, 8000);  // as if nothing had been
  EXPECT_EQ(output.Close(), QVERR_OK);
  ASSERT_EQ(output.SetOutputCoding(kWAVOutputTrueSpeech), QVERR_OK);
  output.SetChannelCount(2);
  EXPECT_EQ(output.Open(path.c_str(), true), QVERR_MONO_ONLY);
}

// Encoders stay until those of another codec take their place.
TEST_F(SpeechOutput, WhenEncodersAreMade) {
  struct Case {
    int coding;
    int made;
    int starts;  // of engines: when they are made, and when they are reset
  };
  for (const Case& c : {Case{kWAVOutputG729A, 2, 2},
                        {kWAVOutputG729A, 2, 4},
                        {kWAVOutputPCM16, 2, 4},
                        {kWAVOutputG729A, 2, 6},
                        {kWAVOutputTrueSpeech, 4, 8},
                        {kWAVOutputG729A, 6, 10}}) {
    EXPECT_EQ(output.SetOutputCoding(c.coding), QVERR_OK);
    EXPECT_EQ(made, c.made);
    EXPECT_EQ(tests::engineRecord.starts, c.starts);
  }
  fails = true;
  EXPECT_EQ(output.SetOutputCoding(kWAVOutputTrueSpeech), QVERR_CREATE_FAILED);
  InitializeMediaAccessorLibrary("a licensee", "");
  EXPECT_EQ(output.SetOutputCoding(kWAVOutputTrueSpeech), QVERR_CODEC_NOT_LICENSED);
  COutputWAVMediaFileImpl other(&Make);
  EXPECT_EQ(other.SetOutputCoding(kWAVOutputG729A), QVERR_CODEC_NOT_LICENSED);
  InitializeMediaAccessorLibrary("", "");
  Open(1, 8000);
  EXPECT_EQ(output.Close(), QVERR_OK);
  EXPECT_EQ(tests::ReadBytes(path)[20], 131) << "still G.729A";
}

TEST_F(SpeechOutput, ALicenceThatEndsEndsTheFile) {
  const short samples[160] = {};
  ASSERT_EQ(output.SetOutputCoding(kWAVOutputG729A), QVERR_OK);
  for (const std::size_t frames : {std::size_t{0}, std::size_t{80}}) {
    Open(2, 8000);
    EXPECT_EQ(output.Write(samples, frames), QVERR_OK);
    InitializeMediaAccessorLibrary("a licensee", "");
    EXPECT_EQ(output.Write(samples, 80), QVERR_NOT_LICENSED);
    EXPECT_EQ(output.Close(), QVERR_NOT_LICENSED);
    EXPECT_FALSE(std::filesystem::exists(path));
    InitializeMediaAccessorLibrary("", "");
  }
}

// What the left encoder queued before the right one was refused is in no later file.
TEST_F(SpeechOutput, ALicenceThatEndsBetweenTheSides) {
  static int asked;
  const MediaAccessorLicenceCheck check = [](const char*) {
    return ++asked == 2 ? QVERR_NOT_LICENSED : QVERR_OK;
  };
  const std::vector<short> samples(160, 7);
  ASSERT_EQ(output.SetOutputCoding(kWAVOutputG729A), QVERR_OK);
  Open(2, 8000);
  asked = 0;
  ASSERT_EQ(InitializeMediaAccessorLibrary(nullptr, check), QVERR_OK);
  EXPECT_EQ(output.Write(samples.data(), 80), QVERR_NOT_LICENSED);
  EXPECT_EQ(tests::engineRecord.encoded.size(), 1U);
  output.Abandon();
  InitializeMediaAccessorLibrary(nullptr, MediaAccessorLicenceCheck{});
  Open(2, 8000);
  EXPECT_EQ(output.Close(), QVERR_OK);
  EXPECT_EQ(tests::ReadBytes(path)[42], 0) << "bytes of data";
}

}  // namespace
