// Which speech codecs the library has, and who may use them.
#include <MediaAccessor/all.h>
#include <gtest/gtest.h>

#include <climits>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/codecs/fake_engine.h"
#include "tests/test_files.h"

namespace {

using namespace Quorvex;

TEST(SpeechCodecs, WhichThereAre) {
  struct Case {
    int codec;
    long bitRate;
    int frameBytes;        // 0: none is made
    bool isCoded = false;  // there is an encoder, too
  };
  for (const Case& c : {Case{0, 0, 0},
                        {7, 0, 0},
                        {IPPCoder::G729A, 0, 10, true},
                        {IPPCoder::G729A_HEADERED, 0, 11, true},
                        {IPPCoder::G723_1_53, 0, 20, true},
                        {IPPCoder::G723_1_63, 0, 24, true},
                        {IPPCoder::G722, 0, 80},
                        {IPPCoder::G722, 56000, 70},
                        {IPPCoder::G722, 48000, 60},
                        {IPPCoder::G722, 12345, 0},
                        {IPPCoder::G722, LONG_MIN, 0},
                        {IPPCoder::G722_1, 24000, 60},
                        {IPPCoder::G722_1, 32000, 80},
                        {IPPCoder::G722_1, 0, 0}}) {
    const auto codec = static_cast<IPPCoder::CODEC>(c.codec);
    const IPPDecoderPtr decoder(IPPDecoder::CreateInstance(codec, c.bitRate));
    EXPECT_EQ(decoder != nullptr ? decoder->GetCompressedFrameBytes() : 0, c.frameBytes)
        << c.codec << " at " << c.bitRate;
    const IPPEncoderPtr encoder(IPPEncoder::CreateInstance(codec));
    EXPECT_EQ(encoder != nullptr ? encoder->GetCompressedFrameBytes() : 0,
              c.isCoded ? c.frameBytes : 0)
        << c.codec;
  }
  const IPPDecoderPtr decoder(IPPDecoder::CreateInstance());
  ASSERT_NE(decoder, nullptr);
  EXPECT_EQ(decoder->GetCodec(), IPPCoder::G729A);
  testing::internal::CaptureStderr();
  MediaAccessorSetLog("", kLogStandardError);
  IPPDecoder::CreateInstance(static_cast<IPPCoder::CODEC>(7));
  IPPDecoder::CreateInstance(IPPCoder::G722, 12345);
  MediaAccessorSetLog("", 0);
  const std::string log = testing::internal::GetCapturedStderr();
  EXPECT_NE(log.find("7 is no speech codec"), std::string::npos) << log;
  EXPECT_NE(log.find("IPP_G722 at 12345 bit/s: this"), std::string::npos) << log;
}

// Bit rates that leave the lowest bits of each code word out.
TEST(SpeechCodecs, G722AsFFmpegDecodesIt) {
  for (const unsigned bits : {6U, 7U}) {
    const std::string bitRate = std::to_string(bits * 8000);
    const auto expected = tests::ReadSamples(tests::Fixture("g722_ffmpeg_" + bitRate + ".s16"));
    const tests::Bytes octets = tests::ReadBytes(tests::Fixture("g722_ffmpeg.g722"));
    tests::Bytes packed(expected.size() / 2 * bits / 8);  // the lowest bit first
    for (std::size_t i = 0; i < packed.size() * 8; ++i) {
      const unsigned bit = octets[i / bits] >> (8 - bits + i % bits) & 1;
      packed[i / 8] = static_cast<unsigned char>(packed[i / 8] | bit << i % 8);
    }
    const IPPDecoderPtr decoder(IPPDecoder::CreateInstance(IPPCoder::G722, std::stol(bitRate)));
    tests::PushSink<short> sink;
    decoder->SetSink(&sink);
    EXPECT_EQ(decoder->Decode(packed.data(), static_cast<std::uint32_t>(packed.size())), QVERR_OK);
    ASSERT_EQ(sink.pushes.size(), 1U);
    EXPECT_EQ(sink.pushes[0], expected) << bitRate;
  }
}

// A frame a call, of all four lengths. The decoder of ffmpeg is exact here.
TEST(SpeechCodecs, G7231FramesOfAnyLengthAsFFmpegDecodesThem) {
  const tests::Bytes frames = tests::ReadBytes(tests::Fixture("g723_1_mixed.g723_1"));
  const IPPDecoderPtr decoder(IPPDecoder::CreateInstance(IPPCoder::G723_1_63));
  const IPPDecoderPtr low(IPPDecoder::CreateInstance(IPPCoder::G723_1_53));
  tests::PushSink<short> sink;
  tests::PushSink<short> lowSink;
  decoder->SetSink(&sink);
  low->SetSink(&lowSink);
  std::vector<short> samples;
  for (std::size_t i = 0; i < frames.size();) {
    const auto bytes = static_cast<std::uint32_t>(IPPCoder::G7231FrameBytes(frames[i]));
    EXPECT_EQ(decoder->Decode(&frames[i], bytes), QVERR_OK);
    samples.insert(samples.end(), sink.pushes.back().begin(), sink.pushes.back().end());
    EXPECT_EQ(low->Decode(&frames[i], bytes), bytes == 24 ? QVERR_BAD_FORMAT : QVERR_OK) << bytes;
    i += bytes;
  }
  EXPECT_EQ(samples, tests::ReadSamples(tests::Fixture("g723_1_mixed.s16")));
  EXPECT_EQ(lowSink.pushes.size(), 17U);
}

// What the host's callbacks do, and what they were asked.
struct Host {
  static QVERRORCODE_TAG Query(const char* feature, unsigned long& licences) {
    asked += std::string("query ") + feature + ";";
    EXPECT_EQ(licences, 1U);
    if (throws) throw std::runtime_error("query");
    licences = count;
    return queried;
  }
  static QVERRORCODE_TAG Check(const char* feature) {
    asked += std::string("check ") + feature + ";";
    return feature == refused ? QVERR_NOT_LICENSED : QVERR_OK;
  }
  inline static std::string asked, refused;
  inline static unsigned long count = 1;
  inline static QVERRORCODE_TAG queried = QVERR_OK;
  inline static bool throws = false;
};

class Licence : public testing::Test {
 protected:
  ~Licence() override {
    InitializeMediaAccessorLibrary("", "");
    InitializeMediaAccessorLibrary(MediaAccessorLicenceQuery{}, nullptr);
  }

  // The codecs that may be used, of all numbers from -1 to 7.
  static std::string Permitted() {
    std::string list;
    Host::asked.clear();
    for (int codec = -1; codec <= 7; ++codec) {
      if (IPPCoder::IsLicensedCodec(static_cast<IPPCoder::CODEC>(codec))) {
        list += std::to_string(codec);
      }
    }
    return list;
  }
};

TEST_F(Licence, TheTextsOfTheHost) {
  EXPECT_EQ(Permitted(), "123456") << "without a word";
  EXPECT_EQ(InitializeMediaAccessorLibrary("somebody", nullptr), QVERR_OK);
  EXPECT_EQ(Permitted(), "56");
  EXPECT_EQ(InitializeMediaAccessorLibrary("somebody", "key"), QVERR_OK);
  EXPECT_EQ(Permitted(), "123456");
  EXPECT_EQ(InitializeMediaAccessorLibrary(L"", L"key"), QVERR_OK);
  EXPECT_EQ(Permitted(), "56");
  InitializeMediaAccessorLibrary(&Host::Query, &Host::Check);
  EXPECT_EQ(Permitted(), "56") << "neither may speak against it";
  EXPECT_EQ(InitializeMediaAccessorLibrary(static_cast<const wchar_t*>(nullptr), nullptr),
            QVERR_OK);
  EXPECT_EQ(Permitted(), "123456");
}

TEST_F(Licence, TheCallbacksOfTheHost) {
  InitializeMediaAccessorLibrary(&Host::Query, &Host::Check);
  EXPECT_EQ(Permitted(), "123456");
  const std::string g729 = "query G729;check G729;";
  const std::string g723 = "query TrueSpeech;check TrueSpeech;";
  EXPECT_EQ(Host::asked, g729 + g729 + g723 + g723);
  Host::refused = "G729";
  EXPECT_EQ(Permitted(), "3456");
  const WAVFileWriterPtr writer(CWAVFileWriter::CreateInstance());
  EXPECT_EQ(writer->SetOutputCoding(kWAVOutputG729A), QVERR_CODEC_NOT_LICENSED);
  EXPECT_EQ(writer->SetOutputCoding(kWAVOutputTrueSpeech), QVERR_OK);
  MediaFilePtr file;
  const std::string speech = tests::Fixture("g729a_bcg729.g729a");
  const std::string trueSpeech = tests::Fixture("g723_1_mixed.wav");
  EXPECT_EQ(MediaFileOpen(speech.c_str(), file), QVERR_NOT_LICENSED);
  EXPECT_EQ(MediaFileOpen(trueSpeech.c_str(), file), QVERR_OK);
  Host::refused = "TrueSpeech";
  EXPECT_EQ(Permitted(), "1256");
  EXPECT_EQ(writer->SetOutputCoding(kWAVOutputG729A), QVERR_OK);
  EXPECT_EQ(writer->SetOutputCoding(kWAVOutputTrueSpeech), QVERR_CODEC_NOT_LICENSED);
  EXPECT_EQ(MediaFileOpen(speech.c_str(), file), QVERR_OK);
  EXPECT_EQ(MediaFileOpen(trueSpeech.c_str(), file), QVERR_NOT_LICENSED);
  InitializeMediaAccessorLibrary(&Host::Query, nullptr);
  EXPECT_EQ(Permitted(), "123456") << "the check has no say any more";
  Host::count = 0;
  EXPECT_EQ(Permitted(), "56");
  Host::count = 2;
  Host::queried = QVERR_BUSY;
  EXPECT_EQ(Permitted(), "56");
  Host::queried = QVERR_OK;
  Host::throws = true;
  EXPECT_EQ(Permitted(), "56");
  InitializeMediaAccessorLibrary(nullptr, &Host::Check);
  EXPECT_EQ(Permitted(), "1256");
}

}  // namespace
