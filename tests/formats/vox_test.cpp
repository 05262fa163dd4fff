// The VOX reader against the algorithm as it is published, with the leak, and against sox, which
// has none.
#include <MediaAccessor/all.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>
#include <string>
#include <vector>

#include "tests/fake_media.h"
#include "tests/test_files.h"

namespace {

using namespace Quorvex;

// Word for word from the tables of the Dialogic ADPCM Algorithm, slow and plain.
std::vector<short> Published(const tests::Bytes& bytes) {
  constexpr int kSteps[] = {16,  17,  19,  21,  23,  25,   28,   31,   34,   37,  41,  45,  50,
                            55,  60,  66,  73,  80,  88,   97,   107,  118,  130, 143, 157, 173,
                            190, 209, 230, 253, 279, 307,  337,  371,  408,  449, 494, 544, 598,
                            658, 724, 796, 876, 963, 1060, 1166, 1282, 1411, 1552};
  constexpr int kMoves[] = {-1, -1, -1, -1, 2, 4, 6, 8};
  std::vector<short> samples;
  int predictor = 0;
  int index = 0;
  for (const int byte : bytes) {
    for (const int nibble : {byte / 16, byte % 16}) {
      const int step = kSteps[index];
      const int magnitude = nibble % 8;
      const int difference = step / 8 + magnitude % 2 * (step / 4) +
                             magnitude / 2 % 2 * (step / 2) + magnitude / 4 * step;
      predictor += nibble / 8 == 1 ? -difference : difference;
      predictor = std::clamp(static_cast<int>(std::trunc(predictor * 127 / 128.0)), -2048, 2047);
      index = std::clamp(index + kMoves[magnitude], 0, 48);
      samples.push_back(static_cast<short>(predictor * 16));
    }
  }
  return samples;
}

class VOX : public testing::Test {
 protected:
  void TearDown() override { CVOXMediaFile::SetDefaultSamplingFrequency(6000); }

  std::string Write(const std::string& name, const tests::Bytes& bytes) {
    tests::WriteBytes(directory.File(name), bytes);
    return directory.File(name);
  }

  static unsigned long FrequencyOf(const std::string& path) {
    MediaFilePtr opened;
    return MediaFileOpen(path.c_str(), opened) == QVERR_OK ? opened->GetSamplingFrequency() : 0;
  }

  const tests::TemporaryDirectory directory;
  const VOXMediaFilePtr file{CVOXMediaFile::CreateInstance()};
};

TEST_F(VOX, SpeechThatSoxEncoded) {
  const std::string path = tests::Fixture("vox_sox.vox");
  ASSERT_EQ(file->Open(path.c_str()), QVERR_OK);
  const std::vector<short> ours = tests::PullAll(*file);
  EXPECT_EQ(ours, Published(tests::ReadBytes(path)));
  // Without the leak the samples wander off, and are the same speech all the same.
  const std::vector<short> theirs = tests::ReadSamples(tests::Fixture("vox_sox.s16"));
  ASSERT_EQ(ours.size(), theirs.size());
  EXPECT_NE(ours, theirs) << "the leak is wanted";
  double product = 0;
  double power = 0;
  double theirPower = 0;
  for (std::size_t i = 0; i < ours.size(); ++i) {
    product += ours[i] * theirs[i];
    power += ours[i] * ours[i];
    theirPower += theirs[i] * theirs[i];
  }
  EXPECT_GT(product / std::sqrt(power * theirPower), 0.95);
  EXPECT_NEAR(std::sqrt(power / theirPower), 1.0, 0.1);
}

TEST_F(VOX, AnyBytesAndTheLimits) {
  tests::Bytes bytes;
  for (unsigned i = 0; i < 70'000; ++i) bytes.push_back(static_cast<unsigned char>(i * i >> 5));
  bytes.insert(bytes.end(), 100, 0x77);
  bytes.insert(bytes.end(), 100, 0xFF);
  ASSERT_EQ(file->Open(Write("x.vox", bytes).c_str()), QVERR_OK);
  const std::vector<short> samples = tests::PullAll(*file);
  EXPECT_EQ(samples, Published(bytes));
  EXPECT_EQ(samples[140'199], 2047 * 16);
  EXPECT_EQ(samples.back(), -2048 * 16);
}

TEST_F(VOX, NameThenOverrideThenDefault) {
  const std::string vox = Write("x.vox", tests::Bytes(3000));
  const std::string vx8 = Write("x.vX8", tests::Bytes(3000));
  EXPECT_EQ(FrequencyOf(vox), 6000U);
  EXPECT_EQ(FrequencyOf(vx8), 8000U);
  CVOXMediaFile::SetDefaultSamplingFrequency(11'025);
  CVOXMediaFile::SetDefaultSamplingFrequency(0);
  EXPECT_EQ(FrequencyOf(vox), 11'025U) << "0 is ignored";
  EXPECT_EQ(FrequencyOf(vx8), 8000U);
  EXPECT_EQ(file->SetSamplingFrequency(16'000), QVERR_OK);
  ASSERT_EQ(file->Open(vox.c_str()), QVERR_OK);
  EXPECT_EQ(file->GetSamplingFrequency(), 16'000U);
  EXPECT_EQ(file->GetMilliseconds(), 375U);
  EXPECT_EQ(file->SetSamplingFrequency(8000), QVERR_ALREADY_OPEN);
  char text[64];
  file->GetFormatDescription(text, sizeof text);
  EXPECT_STREQ(text, "16000Hz ADPCM");
  EXPECT_EQ(file->Close(), QVERR_OK);
  ASSERT_EQ(file->Open(vx8.c_str()), QVERR_OK);
  EXPECT_EQ(file->GetSamplingFrequency(), 8000U) << "the name goes before the override";
  EXPECT_EQ(file->Close(), QVERR_OK);
  EXPECT_EQ(file->SetSamplingFrequency(0), QVERR_OK);
  ASSERT_EQ(file->Open(vox.c_str()), QVERR_OK);
  EXPECT_EQ(file->GetSamplingFrequency(), 11'025U) << "no override any more";
}

TEST_F(VOX, OnlyTheLastExtensionCounts) {
  std::filesystem::create_directory(directory.File("dir.vx8"));
  for (const char* name : {"a.vx8.vox", "dir.vx8/x.vox", "vx8.vox"}) {
    EXPECT_EQ(FrequencyOf(Write(name, tests::Bytes(3000))), 6000U) << name;
  }
  EXPECT_EQ(file->Open(Write("foovx8", {}).c_str()), QVERR_OK);
  EXPECT_EQ(file->GetSamplingFrequency(), 6000U) << "no extension";
}

TEST_F(VOX, NumbersAtTheirLimits) {
  if (const unsigned long tooMuch = std::numeric_limits<unsigned long>::max();
      tooMuch > 0xFFFFFFFF) {
    EXPECT_EQ(file->SetSamplingFrequency(tooMuch), QVERR_INVALID_ARGUMENT);
    CVOXMediaFile::SetDefaultSamplingFrequency(tooMuch);
  }
  ASSERT_EQ(file->Open(Write("empty.vox", {}).c_str()), QVERR_OK);
  EXPECT_EQ(file->GetSamplingFrequency(), 6000U);
  EXPECT_EQ(file->GetMilliseconds(), 0U);
  EXPECT_EQ(tests::PullAll(*file), std::vector<short>{});
  file->Close();
  // 1000 / 19 is rounded before the product is cut: two seconds become less.
  EXPECT_EQ(file->SetSamplingFrequency(19), QVERR_OK);
  ASSERT_EQ(file->Open(Write("x.vox", tests::Bytes(19)).c_str()), QVERR_OK);
  EXPECT_EQ(file->GetMilliseconds(), 1999U);
}

TEST_F(VOX, BlocksHave2048Samples) {
  ASSERT_EQ(file->Open(Write("x.vox", tests::Bytes(1025)).c_str()), QVERR_OK);
  EXPECT_EQ(tests::BlockSizes(*file), (std::vector<unsigned long>{2048, 2}));
}

}  // namespace
