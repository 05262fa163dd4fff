// The header parser on bytes, one field wrong at a time.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "formats/portable_wav/portable_wav_media_file.h"
#include "tests/wav_bytes.h"

namespace {

using namespace Quorvex;
using tests::WavBytes;

QVERRORCODE_TAG Parse(const tests::Bytes& bytes, PortableWAVHeader& header) {
  HeaderReader reader{std::span(bytes)};
  return ParsePortableWAVHeader(reader, header);
}

TEST(PortableWAVHeader, OneFieldWrongAtATime) {
  struct Case {
    const char* what;
    void (*spoil)(WavBytes&);
    QVERRORCODE_TAG result;
  };
  const std::string secondFormat = WavBytes().FormatChunk();
  static const std::string* const kFormat = &secondFormat;
  const Case cases[] = {
      {"nothing", [](WavBytes&) {}, QVERR_OK},
      {"RIFX", [](WavBytes& w) { w.riff = "RIFX"; }, QVERR_BAD_FORMAT},
      {"another form", [](WavBytes& w) { w.wave = "AVI "; }, QVERR_BAD_FORMAT},
      {"fmt of 13 bytes", [](WavBytes& w) { w.formatSize = 13; }, QVERR_BAD_FORMAT},
      {"fmt of 14 bytes", [](WavBytes& w) { w.formatSize = 14; }, QVERR_OK},
      {"fmt of 4,096 bytes", [](WavBytes& w) { w.formatSize = 4096; }, QVERR_OK},
      {"two fmt", [](WavBytes& w) { w.beforeData = *kFormat; }, QVERR_BAD_FORMAT},
      {"two fmt, data between", [](WavBytes& w) { w.afterData = *kFormat; }, QVERR_OK},
      {"two data before fmt",
       [](WavBytes& w) {
         w.beforeFormat = WavBytes::Chunk("data", "ab") + WavBytes::Chunk("data", "ab");
       },
       QVERR_BAD_FORMAT},
      {"tag 0", [](WavBytes& w) { w.tag = 0; }, QVERR_BAD_FORMAT},
      {"tag 3", [](WavBytes& w) { w.tag = 3; }, QVERR_BAD_FORMAT},
      {"extensible", [](WavBytes& w) { w.tag = 0xFFFE; }, QVERR_BAD_FORMAT},
      {"A-law of 2 bytes", [](WavBytes& w) { w.tag = 6; }, QVERR_BAD_FORMAT},
      {"mu-law stereo of 1 byte", [](WavBytes& w) { w.tag = 7, w.channels = 2; }, QVERR_OK},
      {"no channels", [](WavBytes& w) { w.channels = 0; }, QVERR_BAD_FORMAT},
      {"3 channels", [](WavBytes& w) { w.channels = 3, w.blockAlign = 3; }, QVERR_BAD_FORMAT},
      {"rate 0", [](WavBytes& w) { w.frequency = 0; }, QVERR_BAD_FORMAT},
      {"rate 1", [](WavBytes& w) { w.frequency = 1; }, QVERR_OK},
      {"rate 96,000", [](WavBytes& w) { w.frequency = 96'000; }, QVERR_OK},
      {"rate 96,001", [](WavBytes& w) { w.frequency = 96'001; }, QVERR_BAD_FORMAT},
      {"block align 0", [](WavBytes& w) { w.blockAlign = 0; }, QVERR_BAD_FORMAT},
      {"24 bits", [](WavBytes& w) { w.blockAlign = 3, w.data.resize(9); }, QVERR_BAD_FORMAT},
      {"32-bit stereo", [](WavBytes& w) { w.channels = 2, w.blockAlign = 8; }, QVERR_BAD_FORMAT},
      {"3 bytes for 2 channels",
       [](WavBytes& w) { w.channels = 2, w.blockAlign = 3, w.data.resize(9); }, QVERR_BAD_FORMAT},
      {"half a frame", [](WavBytes& w) { w.dataSize = 7; }, QVERR_BAD_FORMAT},
      {"half a frame to the end", [](WavBytes& w) { w.dataSize = 0, w.data.resize(7); },
       QVERR_BAD_FORMAT},
      {"an empty chunk", [](WavBytes& w) { w.beforeFormat = WavBytes::Chunk("LIST", ""); },
       QVERR_OK},
      {"LIST after fmt", [](WavBytes& w) { w.beforeData = WavBytes::Chunk("LIST", "even"); },
       QVERR_OK},
      // No pad byte is skipped, on purpose: with one the walk is off by a byte and finds no data.
      {"odd chunk, padded",
       [](WavBytes& w) { w.beforeData = WavBytes::Chunk("LIST", "odd") + '\0'; }, QVERR_BAD_FORMAT},
      {"odd chunk, not padded", [](WavBytes& w) { w.beforeData = WavBytes::Chunk("LIST", "odd"); },
       QVERR_OK},
      {"chunk past the end", [](WavBytes& w) { w.beforeData = "LIST\xFF\xFF\xFF\xFF"; },
       QVERR_BAD_FORMAT},
  };
  for (const Case& c : cases) {
    WavBytes wav;
    c.spoil(wav);
    PortableWAVHeader header;
    EXPECT_EQ(Parse(wav.ToBytes(), header), c.result) << c.what;
  }
}

TEST(PortableWAVHeader, AnEndlessWalkEnds) {
  WavBytes wav;
  for (int i = 0; i < 100'000; ++i) wav.beforeFormat += WavBytes::Chunk("JUNK", "");
  PortableWAVHeader header;
  EXPECT_EQ(Parse(wav.ToBytes(), header), QVERR_BAD_FORMAT);
}

TEST(PortableWAVHeader, Facts) {
  WavBytes wav;
  wav.tag = 7;
  wav.channels = 2;
  wav.frequency = 3;
  wav.data.resize(20);
  wav.beforeData = WavBytes::Chunk("fact", "1234");
  PortableWAVHeader header;
  ASSERT_EQ(Parse(wav.ToBytes(), header), QVERR_OK);
  EXPECT_EQ(header.law, WaveLaw::kMuLaw);
  EXPECT_EQ(header.audio.facts.channels, 2);
  EXPECT_EQ(header.audio.facts.samplingFrequency, 3U);
  EXPECT_EQ(header.bytesPerSample, 1);
  EXPECT_EQ(header.audio.layout.offset, 56U);
  EXPECT_EQ(header.audio.layout.size, 20U);
  EXPECT_EQ(header.audio.facts.milliseconds, 3333U);
}

TEST(PortableWAVHeader, ALengthThatDoesNotFitIsTheLargest) {
  WavBytes wav;
  wav.frequency = 1;
  wav.tag = 6;
  wav.blockAlign = 1;
  wav.data.assign(5'000'000, '\0');  // 5,000,000 s
  PortableWAVHeader header;
  ASSERT_EQ(Parse(wav.ToBytes(), header), QVERR_OK);
  EXPECT_EQ(header.audio.facts.milliseconds, 0xFFFFFFFFU);
}

}  // namespace
