// The Sun AU reader on files that other programs wrote, and on headers that lie.
#include <MediaAccessor/all.h>
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "tests/au_bytes.h"
#include "tests/fake_media.h"
#include "tests/foreign_file.h"
#include "tests/test_files.h"

namespace {

using namespace Quorvex;
using tests::AuBytes;
using tests::BigEndian;
using tests::ForeignFileCase;

class ForeignAU : public testing::TestWithParam<ForeignFileCase> {};

// The other program's samples, at 32 bits, with what this system does to them: wide integers lose
// their lower half, and every sample is divided by the channel count.
TEST_P(ForeignAU, HasTheSamplesOfTheProgramThatWroteItDividedByTheChannels) {
  const ForeignFileCase& c = GetParam();
  const bool isFloat = std::string(c.name).find("float") != std::string::npos;
  const auto halves = tests::ReadSamples(c.Path(".s32"));
  std::vector<short> expected;
  for (std::size_t i = 0; i + 1 < halves.size(); i += 2) {
    const double low = isFloat ? static_cast<unsigned short>(halves[i]) / 65'536.0 : 0.0;
    expected.push_back(static_cast<short>(std::round((halves[i + 1] + low) / c.channels)));
  }
  ASSERT_EQ(expected.size(), 1200U * static_cast<unsigned>(c.channels));
  tests::ExpectForeignFile(c, ".au", L"Sun AU Format", expected);
}

INSTANTIATE_TEST_SUITE_P(
    AU, ForeignAU,
    testing::Values(ForeignFileCase{"au_sox_ulaw", 2, L"8-bit ISDN u-law"},
                    ForeignFileCase{"au_sox_alaw", 2, L"8-bit ISDN A-law"},
                    ForeignFileCase{"au_sox_pcm8", 2, L"8-bit linear PCM"},
                    ForeignFileCase{"au_sox_pcm16", 2, L"16-bit linear PCM"},
                    ForeignFileCase{"au_sox_pcm24", 2, L"24-bit linear PCM"},
                    ForeignFileCase{"au_sox_pcm32", 2, L"32-bit linear PCM"},
                    ForeignFileCase{"au_sox_float32", 2, L"32-bit IEEE floating point"},
                    ForeignFileCase{"au_sox_float64", 2, L"64-bit IEEE floating point"},
                    ForeignFileCase{"au_sox_three_channels", 3, L"24-bit linear PCM"},
                    ForeignFileCase{"au_sndfile_ulaw", 1, L"8-bit ISDN u-law"},
                    ForeignFileCase{"au_sndfile_alaw", 1, L"8-bit ISDN A-law"},
                    ForeignFileCase{"au_sndfile_pcms8", 1, L"8-bit linear PCM"},
                    ForeignFileCase{"au_sndfile_pcm16", 1, L"16-bit linear PCM"},
                    ForeignFileCase{"au_sndfile_pcm24", 1, L"24-bit linear PCM"},
                    ForeignFileCase{"au_sndfile_pcm32", 1, L"32-bit linear PCM"},
                    ForeignFileCase{"au_sndfile_float32", 1, L"32-bit IEEE floating point"},
                    ForeignFileCase{"au_sndfile_float64", 1, L"64-bit IEEE floating point"},
                    // Its data size is all ones.
                    ForeignFileCase{"au_ffmpeg_pipe", 2, L"16-bit linear PCM"}),
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

TEST_F(AU, TheGainStaysAlthoughTheMixerAveragesAgain) {
  AuBytes au;
  au.channels = 2;
  au.data = BigEndian(1000, 2) + BigEndian(2000, 2);
  ASSERT_EQ(Open(au), QVERR_OK);
  EXPECT_EQ(tests::PullAll(*file), std::vector<short>{750});
}

TEST_F(AU, BlocksHave1024Frames) {
  ASSERT_EQ(MediaFileOpen(tests::Fixture("au_sox_pcm16.au").c_str(), file), QVERR_OK);
  EXPECT_EQ(tests::BlockSizes(*file), (std::vector<unsigned long>{1024, 176}));
}

}  // namespace
