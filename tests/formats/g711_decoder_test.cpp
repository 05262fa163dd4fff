// The G.711 decoder as a sink that feeds another sink.
#include <MediaAccessor/all.h>
#include <gtest/gtest.h>

#include <numeric>
#include <vector>

#include "tests/fake_media.h"
#include "tests/test_files.h"

namespace {

using namespace Quorvex;

class G711Decoder : public testing::Test {
 protected:
  // Forwards all samples of a block, whatever unit the length has.
  struct WholeSink : tests::FakeSink {
    QVERRORCODE_TAG Write(const void* data, unsigned long count) override {
      counts.push_back(count);
      const auto* samples = static_cast<const short*>(data);
      written.insert(written.end(), samples, samples + count / 2 * channels);
      return result;
    }
    unsigned long channels = 1;
  };

  G711DecoderPtr decoder{CG711Decoder::CreateInstance()};
  WholeSink sink;
  tests::Bytes codes = tests::Bytes(256);

  void SetUp() override { std::iota(codes.begin(), codes.end(), static_cast<unsigned char>(0)); }
};

TEST_F(G711Decoder, EveryCodeWordAsSoxExpandsIt) {
  decoder->SetTarget(&sink);
  decoder->SetChannelCount(1);
  EXPECT_EQ(decoder->SetLaw(CG711Decoder::kSelectALaw), QVERR_OK);
  EXPECT_EQ(decoder->Write(codes.data(), 256), QVERR_OK);
  EXPECT_EQ(sink.written, tests::ReadSamples(tests::Fixture("g711_alaw.s16")));
  EXPECT_EQ(sink.written[0], -5504);
  sink.written.clear();
  EXPECT_EQ(decoder->SetLaw(CG711Decoder::kSelectMuLaw), QVERR_OK);
  EXPECT_EQ(decoder->Write(codes.data(), 256), QVERR_OK);
  EXPECT_EQ(sink.written, tests::ReadSamples(tests::Fixture("g711_mulaw.s16")));
  EXPECT_EQ(sink.written[0], -32124);
  EXPECT_EQ(sink.written[0x7F], 0);
  EXPECT_EQ(sink.written[0xFF], 0);
}

TEST_F(G711Decoder, NeedsTargetLawAndChannelCount) {
  EXPECT_EQ(decoder->SetLaw(CG711Decoder::kSelectMuLaw), QVERR_OK);
  decoder->SetTarget(&sink);
  EXPECT_EQ(decoder->Write(codes.data(), 1), QVERR_INVALID_ARGUMENT);
  EXPECT_EQ(decoder->SetChannelCount(-1), QVERR_OK);
  EXPECT_EQ(decoder->Write(codes.data(), 1), QVERR_INVALID_ARGUMENT);
  EXPECT_EQ(decoder->SetChannelCount(1), QVERR_OK);
  EXPECT_EQ(decoder->Write(codes.data(), 1), QVERR_OK);
  EXPECT_EQ(decoder->Write(nullptr, 1), QVERR_INVALID_ARGUMENT);
  for (const int selector : {0, 3, -1, 6, 7}) {
    EXPECT_EQ(decoder->SetLaw(selector), QVERR_INVALID_ARGUMENT);
  }
  EXPECT_EQ(decoder->Write(codes.data(), 1), QVERR_OK) << "a bad selector leaves the law alone";
  decoder->SetTarget(nullptr);
  EXPECT_EQ(decoder->Write(codes.data(), 1), QVERR_INVALID_ARGUMENT);
  G711DecoderPtr withoutLaw(CG711Decoder::CreateInstance());
  withoutLaw->SetTarget(&sink);
  withoutLaw->SetChannelCount(1);
  EXPECT_EQ(withoutLaw->Write(codes.data(), 1), QVERR_INVALID_ARGUMENT);
}

// Wanted: the target is told frames x 2, though two channels are twice as many bytes.
TEST_F(G711Decoder, ForwardsFramesTimesTwoAndTheTargetsResult) {
  decoder->SetTarget(&sink);
  decoder->SetLaw(CG711Decoder::kSelectALaw);
  decoder->SetChannelCount(2);
  sink.channels = 2;
  EXPECT_EQ(decoder->Write(codes.data(), 100), QVERR_OK);
  EXPECT_EQ(decoder->Write(nullptr, 0), QVERR_OK);
  EXPECT_EQ(sink.counts, (std::vector<unsigned long>{200, 0}));
  const auto expected = tests::ReadSamples(tests::Fixture("g711_alaw.s16"));
  EXPECT_EQ(sink.written, std::vector<short>(expected.begin(), expected.begin() + 200));
  sink.result = QVERR_FILE_IO;
  EXPECT_EQ(decoder->Write(codes.data(), 1), QVERR_FILE_IO);
}

}  // namespace
