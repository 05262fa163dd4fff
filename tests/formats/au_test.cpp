// The Sun AU reader on files that other programs wrote, and on headers that lie.
#include <MediaAccessor/all.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <ostream>
#include <string>
#include <vector>

#include "tests/fake_media.h"
#include "tests/test_files.h"

namespace {

using namespace Quorvex;

std::string BigEndian(std::uint64_t value, int bytes) {
  std::string text;
  for (int i = bytes - 1; i >= 0; --i) text += static_cast<char>(value >> (8 * i) & 0xFF);
  return text;
}

// An AU file whose fields can be set to anything.
struct AuBytes {
  std::uint32_t magic = 0x2E736E64;
  std::uint32_t dataOffset = 24;
  std::uint32_t dataSize = 0xFFFFFFFF;
  std::uint32_t encoding = 3;
  std::uint32_t rate = 8000;
  std::uint32_t channels = 1;
  std::string annotation;
  std::string data = std::string(16, '\0');

  tests::Bytes ToBytes() const {
    std::string text;
    for (const std::uint32_t field : {magic, dataOffset, dataSize, encoding, rate, channels}) {
      text += BigEndian(field, 4);
    }
    text += annotation + data;
    return tests::Bytes(text.begin(), text.end());
  }
};

struct FixtureCase {
  const char* name;
  int channels;
  const wchar_t* encoding;
};

void PrintTo(const FixtureCase& c, std::ostream* stream) { *stream << c.name; }

class ForeignAU : public testing::TestWithParam<FixtureCase> {};

// The other program's samples, at 32 bits, with what this system does to them: wide integers lose
// their lower half, and every sample is divided by the channel count.
TEST_P(ForeignAU, HasTheSamplesOfTheProgramThatWroteItDividedByTheChannels) {
  const FixtureCase& c = GetParam();
  const std::string path = tests::Fixture(std::string(c.name) + ".au");
  const bool isFloat = std::string(c.name).find("float") != std::string::npos;
  const auto halves = tests::ReadSamples(tests::Fixture(std::string(c.name) + ".s32"));
  std::vector<short> expected;
  for (std::size_t i = 0; i + 1 < halves.size(); i += 2) {
    const double low = isFloat ? static_cast<unsigned short>(halves[i]) / 65'536.0 : 0.0;
    expected.push_back(static_cast<short>(std::round((halves[i + 1] + low) / c.channels)));
  }
  ASSERT_EQ(expected.size(), 1200U * static_cast<unsigned>(c.channels));
  MediaFilePtr file;
  ASSERT_EQ(MediaFileOpen(path.c_str(), file), QVERR_OK);
  EXPECT_EQ(tests::WideDescription(*file), L"Sun AU Format");
  wchar_t encoding[64];
  file->GetFormatDescription(encoding, 64);
  EXPECT_STREQ(encoding, c.encoding);
  EXPECT_EQ(file->GetSamplingFrequency(), 8000U);
  EXPECT_EQ(file->GetTrackChannelCount(), c.channels);
  EXPECT_EQ(file->GetMilliseconds(), 150U);
  ASSERT_EQ(file->SelectChannels(nullptr, 0, kChannelModeSeparate), QVERR_OK);
  EXPECT_EQ(tests::PullAll(*file), expected);
}

INSTANTIATE_TEST_SUITE_P(
    AU, ForeignAU,
    testing::Values(FixtureCase{"au_sox_ulaw", 2, L"8-bit ISDN u-law"},
                    FixtureCase{"au_sox_alaw", 2, L"8-bit ISDN A-law"},
                    FixtureCase{"au_sox_pcm8", 2, L"8-bit linear PCM"},
                    FixtureCase{"au_sox_pcm16", 2, L"16-bit linear PCM"},
                    FixtureCase{"au_sox_pcm24", 2, L"24-bit linear PCM"},
                    FixtureCase{"au_sox_pcm32", 2, L"32-bit linear PCM"},
                    FixtureCase{"au_sox_float32", 2, L"32-bit IEEE floating point"},
                    FixtureCase{"au_sox_float64", 2, L"64-bit IEEE floating point"},
                    FixtureCase{"au_sox_three_channels", 3, L"24-bit linear PCM"},
                    FixtureCase{"au_sndfile_ulaw", 1, L"8-bit ISDN u-law"},
                    FixtureCase{"au_sndfile_alaw", 1, L"8-bit ISDN A-law"},
                    FixtureCase{"au_sndfile_pcms8", 1, L"8-bit linear PCM"},
                    FixtureCase{"au_sndfile_pcm16", 1, L"16-bit linear PCM"},
                    FixtureCase{"au_sndfile_pcm24", 1, L"24-bit linear PCM"},
                    FixtureCase{"au_sndfile_pcm32", 1, L"32-bit linear PCM"},
                    FixtureCase{"au_sndfile_float32", 1, L"32-bit IEEE floating point"},
                    FixtureCase{"au_sndfile_float64", 1, L"64-bit IEEE floating point"},
                    // Its data size is all ones.
                    FixtureCase{"au_ffmpeg_pipe", 2, L"16-bit linear PCM"}),
    [](const auto& test) { return std::string(test.param.name); });

class AU : public testing::Test {
 protected:
  QVERRORCODE_TAG Open(const AuBytes& au) {
    const std::string path = directory.File("x.au");
    file.reset();
    tests::WriteBytes(path, au.ToBytes());
    return MediaFileOpen(path.c_str(), file);
  }

  const tests::TemporaryDirectory directory;
  MediaFilePtr file;
};

TEST_F(AU, OneFieldWrongAtATime) {
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
    EXPECT_EQ(Open(au), c.result) << c.what;
    if (file != nullptr) tests::PullAll(*file);
  }
  for (const std::uint32_t encoding : {0U, 8U, 22U, 23U, 24U, 25U, 26U, 28U, 0xFFFFFFFFU}) {
    AuBytes au;
    au.encoding = encoding;
    EXPECT_EQ(Open(au), QVERR_BAD_FORMAT) << encoding;
  }
  tests::WriteBytes(directory.File("short.au"), tests::Bytes(23, '.'));
  EXPECT_EQ(MediaFileOpen(directory.File("short.au").c_str(), file), QVERR_FILE_OPEN_FAILED);
}

TEST_F(AU, AnAnnotationOfAnyLengthIsSkipped) {
  AuBytes au;
  au.data = BigEndian(0x12345678, 4) + "odd";  // one byte of it is no whole sample
  for (const std::size_t length : {std::size_t{1}, std::size_t{4097}, std::size_t{100'000}}) {
    au.annotation.assign(length, '.');
    au.dataOffset = static_cast<std::uint32_t>(24 + length);
    ASSERT_EQ(Open(au), QVERR_OK);
    EXPECT_EQ(tests::PullAll(*file), (std::vector<short>{0x1234, 0x5678, 'o' << 8 | 'd'}));
  }
}

// The formula as it stands, in double precision from left to right: half a frame counts, and a
// length that is a whole number of milliseconds can come out one less.
TEST_F(AU, DurationInDoublePrecision) {
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
    ASSERT_EQ(Open(au), QVERR_OK);
    EXPECT_EQ(file->GetMilliseconds(), c.milliseconds) << c.rate;
  }
}

TEST_F(AU, FloatsThatAreNoSamples) {
  using Float = std::numeric_limits<float>;
  using Double = std::numeric_limits<double>;
  AuBytes au;
  au.encoding = 6;
  au.data.clear();
  // Nine, so that some are converted by the vector loop and some are not.
  for (const float value : {1.0F, -1.0F, Float::quiet_NaN(), Float::infinity(), -Float::infinity(),
                            Float::max(), Float::denorm_min(), 0.25F, Float::signaling_NaN()}) {
    au.data += BigEndian(std::bit_cast<std::uint32_t>(value), 4);
  }
  const std::vector<short> expected = {32767, -32768, 0, 32767, -32768, 32767, 0, 8192, 0};
  ASSERT_EQ(Open(au), QVERR_OK);
  EXPECT_EQ(tests::PullAll(*file), expected);
  au.encoding = 7;
  au.data.clear();
  for (const double value :
       {1.0, -1.0, Double::quiet_NaN(), Double::infinity(), -Double::infinity(), Double::max(),
        Double::denorm_min(), 0.25, Double::signaling_NaN()}) {
    au.data += BigEndian(std::bit_cast<std::uint64_t>(value), 8);
  }
  ASSERT_EQ(Open(au), QVERR_OK);
  EXPECT_EQ(tests::PullAll(*file), expected);
}

TEST_F(AU, BlocksOf1024FramesAndTheStatesOfAnObject) {
  const CMediaFileFactory* factory = nullptr;
  bool isDefault = false;
  ASSERT_EQ(MediaAccessorRegistryGetFactory("au", 0, factory, isDefault), QVERR_OK);
  file.reset(factory->CreateMediaFile());
  const short* samples = nullptr;
  unsigned long frames = 0;
  EXPECT_EQ(file->ReadBlock(samples, frames), QVERR_FILE_NOT_OPEN);
  EXPECT_EQ(file->Close(), QVERR_FILE_NOT_OPEN);
  EXPECT_EQ(file->Open(tests::Fixture("refused_aiff.wav").c_str()), QVERR_BAD_FORMAT);
  EXPECT_EQ(file->Open(tests::Fixture("missing.au").c_str()), QVERR_FILE_OPEN_FAILED);
  EXPECT_EQ(file->Open(tests::Fixture("au_sox_pcm16.au").c_str()), QVERR_OK);
  EXPECT_EQ(file->Open(tests::Fixture("au_sndfile_alaw.au").c_str()), QVERR_ALREADY_OPEN);
  for (const unsigned long expected : {1024UL, 176UL, 0UL, 0UL}) {
    EXPECT_EQ(file->ReadBlock(samples, frames), QVERR_OK);
    EXPECT_EQ(frames, expected);
  }
  EXPECT_EQ(file->Close(), QVERR_OK);
  EXPECT_EQ(file->Close(), QVERR_FILE_NOT_OPEN);
  EXPECT_EQ(file->GetSamplingFrequency(), 0U);
  EXPECT_EQ(file->GetTrackChannelCount(), 0);
  wchar_t text[64];
  file->GetFormatDescription(text, 64);
  EXPECT_STREQ(text, L"File not open");
}

}  // namespace
