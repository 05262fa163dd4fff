// The wave engine itself: what no public class reaches.
#include "formats/wav/wav_media_file.h"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <string>
#include <thread>

#include "formats/wav/output_wav_media_file.h"
#include "platform/text.h"
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

}  // namespace
