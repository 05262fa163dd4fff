// The header parser on bytes, one field wrong at a time.
#include <gtest/gtest.h>

#include <cstdint>

#include "formats/au/au_media_file.h"
#include "tests/au_bytes.h"

namespace {

using namespace Quorvex;
using tests::AuBytes;

QVERRORCODE_TAG Parse(const tests::Bytes& bytes, AUHeader& header) {
  HeaderReader reader{std::span(bytes)};
  return ParseAUHeader(reader, header);
}

TEST(AUHeader, OneFieldWrongAtATime) {
  struct Case {
    const char* what;
    void (*spoil)(AuBytes&);
    QVERRORCODE_TAG result;
  };
  const Case cases[] = {
      {"nothing", [](AuBytes&) {}, QVERR_OK},
      {"little-endian magic", [](AuBytes& au) { au.magic = 0x646E732E; }, QVERR_BAD_FORMAT},
      {"offset 23", [](AuBytes& au) { au.dataOffset = 23; }, QVERR_BAD_FORMAT},
      {"offset 25", [](AuBytes& au) { au.dataOffset = 25; }, QVERR_OK},
      {"offset at the end", [](AuBytes& au) { au.dataOffset = 40; }, QVERR_OK},
      {"offset past the end", [](AuBytes& au) { au.dataOffset = 41; }, QVERR_BAD_FORMAT},
      {"offset all ones", [](AuBytes& au) { au.dataOffset = 0xFFFFFFFF; }, QVERR_BAD_FORMAT},
      {"data size 0", [](AuBytes& au) { au.dataSize = 0; }, QVERR_OK},
      {"rate 0", [](AuBytes& au) { au.rate = 0; }, QVERR_BAD_FORMAT},
      {"rate all ones", [](AuBytes& au) { au.rate = 0xFFFFFFFF; }, QVERR_OK},
      {"no channels", [](AuBytes& au) { au.channels = 0; }, QVERR_BAD_FORMAT},
      {"a block of 16 MiB", [](AuBytes& au) { au.channels = 8192; }, QVERR_OK},
      {"a larger block", [](AuBytes& au) { au.channels = 8193; }, QVERR_BAD_FORMAT},
      {"the same of 1 byte a sample", [](AuBytes& au) { au.encoding = 1, au.channels = 8193; },
       QVERR_BAD_FORMAT},
      {"2,049 channels of 8 bytes", [](AuBytes& au) { au.encoding = 7, au.channels = 2049; },
       QVERR_BAD_FORMAT},
      {"channels all ones", [](AuBytes& au) { au.channels = 0xFFFFFFFF; }, QVERR_BAD_FORMAT},
  };
  for (const Case& c : cases) {
    AuBytes au;
    c.spoil(au);
    AUHeader header;
    EXPECT_EQ(Parse(au.ToBytes(), header), c.result) << c.what;
  }
  AUHeader header;
  EXPECT_EQ(Parse(tests::Bytes(23, '.'), header), QVERR_FILE_OPEN_FAILED);
}

TEST(AUHeader, EncodingsThatAreNotDecodedHaveNames) {
  struct Case {
    std::uint32_t encoding;
    const wchar_t* name;
  };
  const Case cases[] = {{23, L"4-bit CCITT G.721 ADPCM"},       {24, L"CCITT G.722 ADPCM"},
                        {25, L"CCITT G.723 3-bit ADPCM"},       {26, L"CCITT G.723 5-bit ADPCM"},
                        {0, L"Unknown AU format code"},         {8, L"Unknown AU format code"},
                        {22, L"Unknown AU format code"},        {28, L"Unknown AU format code"},
                        {0xFFFFFFFF, L"Unknown AU format code"}};
  for (const Case& c : cases) {
    AuBytes au;
    au.encoding = c.encoding;
    AUHeader header;
    EXPECT_EQ(Parse(au.ToBytes(), header), QVERR_BAD_FORMAT) << c.encoding;
    EXPECT_STREQ(AUEncodingName(header.encoding), c.name);
  }
}

// The formula as it stands, in double precision from left to right: half a frame counts, and a
// length that is a whole number of milliseconds can come out one less.
TEST(AUHeader, DurationInDoublePrecision) {
  struct Case {
    std::uint32_t rate;
    std::size_t bytes;
    unsigned long milliseconds;
  };
  for (const Case& c :
       {Case{1000, 3, 1}, Case{2, 3, 750}, Case{19, 38, 999}, Case{1, 10'000'000, 0xFFFFFFFF}}) {
    AuBytes au;
    au.rate = c.rate;
    au.data.assign(c.bytes, '\0');
    AUHeader header;
    ASSERT_EQ(Parse(au.ToBytes(), header), QVERR_OK);
    EXPECT_EQ(header.audio.facts.milliseconds, c.milliseconds) << c.rate;
  }
}

}  // namespace
