// The RIFF header probe on small files, with one thing special at a time.
#include "support/riff_header_probe.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <string>

#include "platform/text.h"
#include "tests/wav_bytes.h"

namespace {

using namespace Quorvex;
using tests::WavBytes;

constexpr std::int64_t kNegative = -0x80000000LL;

// The record's fields in their order, without the stream.
using Record = std::array<std::int64_t, 10>;
constexpr Record kNothing{};

Record RecordOf(const RIFFHeaderProbe& probe) {
  return {probe.formatTag,
          probe.channels,
          probe.samplesPerSecond,
          probe.averageBytesPerSecond,
          probe.blockAlign,
          probe.bitsPerSample,
          probe.milliseconds,
          probe.dataOffset,
          static_cast<std::int64_t>(probe.dataSize),
          probe.formatChunkSize};
}

class RIFFHeaderProbeTest : public testing::Test {
 protected:
  static WavBytes Ordinary() {
    WavBytes wav;
    wav.bits = 16;
    wav.data.assign(33, 'x');
    return wav;
  }

  bool Open(const tests::Bytes& bytes, bool readWrite = false) {
    probe.stream.reset();  // Windows replaces no file that is open
    tests::WriteBytes(path, bytes);
    return probe.Open(platform::Widen(path).c_str(), readWrite);
  }

  const tests::TemporaryDirectory directory;
  const std::string path = directory.File("x.wav");
  RIFFHeaderProbe probe;
};

TEST_F(RIFFHeaderProbeTest, WhatIsRead) {
  struct Case {
    const char* what;
    void (*change)(WavBytes&);
    Record record;
  };
  const Case cases[] = {
      // tag, channels, rate, bytes/s, block align, bits, ms, data offset, data size, fmt size
      {"nothing", [](WavBytes&) {}, {1, 1, 8000, 16000, 2, 16, 2, 44, 33, 16}},
      {"data before fmt",
       [](WavBytes& w) { w.beforeFormat = WavBytes::Chunk("data", "abcd"); },
       {1, 1, 8000, 16000, 2, 16, 0, 20, 4, 16}},
      {"odd chunk, not padded",
       [](WavBytes& w) { w.beforeData = WavBytes::Chunk("LIST", "odd"); },
       {1, 1, 8000, 16000, 2, 16, 2, 55, 33, 16}},
      // No pad byte is skipped, on purpose, so that the walk misses the data: the file is all data.
      {"odd chunk, padded",
       [](WavBytes& w) { w.beforeData = WavBytes::Chunk("LIST", "odd") + '\0'; },
       {1, 1, 8000, 16000, 2, 16, 5, 0, 89, 16}},
      {"fmt of 14 bytes",
       [](WavBytes& w) { w.formatSize = 14; },
       {1, 1, 8000, 16000, 2, 8, 2, 42, 33, 14}},
      {"fmt of 5,000 bytes",
       [](WavBytes& w) { w.formatSize = 5000; },
       {1, 1, 8000, 16000, 2, 16, 2, 5028, 33, 5000}},
      {"data size 0",
       [](WavBytes& w) { w.dataSize = 0, w.afterData = "abc"; },
       {1, 1, 8000, 16000, 2, 16, 2, 44, 36, 16}},
      {"data size of all ones",
       [](WavBytes& w) { w.dataSize = 0xFFFFFFFF; },
       {1, 1, 8000, 16000, 2, 16, 2, 44, 33, 16}},
      {"block align of one channel",
       [](WavBytes& w) { w.channels = 3; },
       {1, 3, 8000, 16000, 6, 16, 2, 44, 33, 16}},
      {"block align 0",
       [](WavBytes& w) { w.blockAlign = 0, w.bytesPerSecond = 16000; },
       {1, 1, 8000, 16000, 0, 16, 2, 44, 33, 16}},
      {"bits 0",
       [](WavBytes& w) { w.bits = 0, w.channels = 2; },
       {1, 2, 8000, 16000, 2, 8, 2, 44, 33, 16}},
      {"bits 0, hardly any bytes per second",
       [](WavBytes& w) { w.bits = 0, w.bytesPerSecond = 999; },
       {1, 1, 8000, 999, 2, 0, 33, 44, 33, 16}},
      {"bits 0, bytes per second negative",
       [](WavBytes& w) { w.bits = 0, w.bytesPerSecond = 0x80000000; },
       {1, 1, 8000, kNegative, 2, 8, 4, 44, 33, 16}},
      // 33 x 8 / 16 / 3 is 5 frames.
      {"each division truncates",
       [](WavBytes& w) { w.bytesPerSecond = 0, w.channels = 3, w.frequency = 1000; },
       {1, 3, 1000, 0, 6, 16, 5, 44, 33, 16}},
      {"a length that does not fit",
       [](WavBytes& w) { w.bytesPerSecond = 1, w.data.resize(5'000'000); },
       {1, 1, 8000, 1, 2, 16, 0xFFFFFFFF, 44, 5'000'000, 16}},
      {"TrueSpeech",
       [](WavBytes& w) { w.tag = 0x22; },
       {0x22, 1, 8000, 16000, 2, 16, 0, 44, 33, 16}},
      {"G.723.1",
       [](WavBytes& w) { w.tag = 0xA100; },
       {0xA100, 1, 8000, 16000, 2, 16, 0, 44, 33, 16}},
  };
  for (const Case& c : cases) {
    WavBytes wav = Ordinary();
    c.change(wav);
    ASSERT_TRUE(Open(wav.ToBytes())) << c.what;
    EXPECT_EQ(RecordOf(probe), c.record) << c.what;
    EXPECT_EQ(std::ftell(probe.stream.get()), static_cast<long>(probe.dataOffset)) << c.what;
  }
}

TEST_F(RIFFHeaderProbeTest, WhatIsRefusedLeavesNothing) {
  struct Case {
    const char* what;
    void (*spoil)(WavBytes&);
  };
  const Case cases[] = {
      {"RIFX", [](WavBytes& w) { w.riff = "RIFX"; }},
      {"another form", [](WavBytes& w) { w.wave = "AVI "; }},
      {"fmt of 13 bytes", [](WavBytes& w) { w.formatSize = 13; }},
      {"two fmt", [](WavBytes& w) { w.beforeData = w.FormatChunk(); }},
      {"two data",
       [](WavBytes& w) {
         w.beforeFormat = WavBytes::Chunk("data", "ab") + WavBytes::Chunk("data", "ab");
       }},
      {"no fmt", [](WavBytes& w) { w.beforeFormat = "LIST\xFF\xFF\xFF\xFF"; }},
      {"no channels", [](WavBytes& w) { w.channels = 0; }},
      {"rate 0", [](WavBytes& w) { w.frequency = 0; }},
      {"rate negative", [](WavBytes& w) { w.frequency = 0x80000000; }},
      {"block align of 17 bits", [](WavBytes& w) { w.channels = 3, w.blockAlign = 0x8000; }},
      {"bits of 17 bits",
       [](WavBytes& w) { w.bits = 0, w.bytesPerSecond = 0x2000, w.frequency = 1; }},
      {"an endless walk",
       [](WavBytes& w) {
         for (int i = 0; i < 100'000; ++i) w.beforeData += WavBytes::Chunk("JUNK", "");
       }},
  };
  for (const Case& c : cases) {
    ASSERT_TRUE(Open(Ordinary().ToBytes()));
    WavBytes wav = Ordinary();
    c.spoil(wav);
    EXPECT_FALSE(Open(wav.ToBytes())) << c.what;
    EXPECT_EQ(probe.stream, nullptr) << c.what;
    EXPECT_EQ(RecordOf(probe), kNothing) << c.what;
  }
  const tests::Bytes whole = Ordinary().ToBytes();
  for (const std::ptrdiff_t length : {0, 11, 35}) {
    EXPECT_FALSE(Open({whole.begin(), whole.begin() + length})) << length;
  }
  const std::wstring missing = platform::Widen(directory.File("missing"));
  EXPECT_FALSE(probe.Open(missing.c_str(), true));
  EXPECT_FALSE(std::filesystem::exists(directory.File("missing")));
  EXPECT_FALSE(probe.Open(platform::Widen(directory.File("")).c_str(), false)) << "a directory";
}

TEST_F(RIFFHeaderProbeTest, TheStreamIsThereToWriteWhenAskedFor) {
  for (const bool readWrite : {false, true}) {
    ASSERT_TRUE(Open(Ordinary().ToBytes(), readWrite));
    std::fputc('y', probe.stream.get());
    probe.stream.reset();
    EXPECT_EQ(tests::ReadBytes(path)[44], readWrite ? 'y' : 'x');
  }
}

// Offsets that are negative in 32 bits, and one that has 33. The files are sparse.
TEST_F(RIFFHeaderProbeTest, DataBeyondTwoGigabytes) {
  for (const std::uint32_t gap : {0x80000000U, 0xFFFFFFFFU}) {
    WavBytes wav = Ordinary();
    wav.beforeData = "LIST" + WavBytes::Number(gap, 4);
    wav.data.clear();
    tests::Bytes bytes = wav.ToBytes();
    bytes.resize(bytes.size() - 8);  // the header of the data
    tests::WriteBytes(path, bytes);
    {
      std::ofstream file(path, std::ios::binary | std::ios::in);
      file.seekp(static_cast<std::streamoff>(bytes.size() + gap));
      file << WavBytes::Chunk("data", "");
    }
    std::filesystem::resize_file(path, 0x200000000);
    const bool fits = gap == 0x80000000;
    ASSERT_EQ(probe.Open(platform::Widen(path).c_str(), false), fits);
    const Record expected{1, 1, 8000, 16000, 2, 16, 402653180, 0x80000034, 0x17FFFFFCC, 16};
    EXPECT_EQ(RecordOf(probe), fits ? expected : kNothing);
    probe.stream.reset();
  }
}

}  // namespace
