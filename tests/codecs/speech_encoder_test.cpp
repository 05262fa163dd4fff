// The speech encoder over engines that write down which PCM reaches them.
#include <MediaAccessor/all.h>
#include <gtest/gtest.h>

#include <utility>

#include "codecs/speech_coder.h"
#include "tests/codecs/fake_engine.h"
#include "tests/fake_media.h"
#include "tests/resampling.h"

namespace {

using namespace Quorvex;
using tests::engineRecord;
using tests::Samples;

// An encoder with its sink.
struct Encoding {
  explicit Encoding(IPPCoder::CODEC codec = IPPCoder::G729A,
                    const SpeechEngine* engine = &tests::kFakeG729A)
      : encoder((engineRecord = {}, MakeEncoder(codec, engine))) {
    encoder->SetSink(&sink);
  }

  QVERRORCODE_TAG Write(const Samples& samples) {
    return encoder->Write(samples.data(), static_cast<unsigned long>(samples.size()));
  }

  tests::PushSink<unsigned char> sink;
  IPPEncoderPtr encoder;
};

template <class Element>
std::vector<Element> Joined(const std::vector<std::vector<Element>>& parts) {
  std::vector<Element> all;
  for (const auto& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

TEST(SpeechEncoder, GathersFramesAndTellsBytes) {
  struct Case {
    IPPCoder::CODEC codec;
    std::vector<std::size_t> writes;  // samples; 0 ends the stream
    std::vector<std::size_t> pushes;  // bytes
  };
  const Case cases[] = {
      {IPPCoder::G729A, {50, 200, 10, 0, 0, 80}, {30, 10, 10}},
      {IPPCoder::G729A_HEADERED, {165, 0}, {22, 11}},
      {IPPCoder::G723_1_53, {239, 1}, {20}},
      {IPPCoder::G723_1_63, {480}, {48}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.codec);
    Encoding encoding(c.codec, tests::FakeEngineOf(c.codec));
    const std::size_t frameSamples = c.codec <= IPPCoder::G729A_HEADERED ? 80 : 240;
    Samples given;
    for (const std::size_t count : c.writes) {
      const Samples samples = tests::Noise(count, 32767, static_cast<unsigned>(given.size()) + 1);
      EXPECT_EQ(encoding.Write(samples), QVERR_OK);
      given.insert(given.end(), samples.begin(), samples.end());
      if (count == 0) given.resize((given.size() + frameSamples - 1) / frameSamples * frameSamples);
    }
    EXPECT_EQ(Joined(engineRecord.encoded), given) << "the last frame of a stream has zeros";
    EXPECT_FALSE(engineRecord.modes.voiceActivityDetection);

    std::vector<std::size_t> sizes;
    for (const auto& push : encoding.sink.pushes) sizes.push_back(push.size());
    EXPECT_EQ(sizes, c.pushes);
    std::vector<unsigned char> coded;
    const auto bytes = static_cast<std::size_t>(encoding.encoder->GetCompressedFrameBytes());
    for (const Samples& frame : engineRecord.encoded) {
      const std::size_t begin = coded.size();
      coded.resize(begin + bytes, static_cast<unsigned char>(frame[0]));
      if (c.codec == IPPCoder::G729A_HEADERED) coded[begin] = 0;
    }
    EXPECT_EQ(Joined(encoding.sink.pushes), coded);
  }
  EXPECT_EQ(MakeEncoder(IPPCoder::G722, &tests::kFakeG722), nullptr);
}

// The mixed return is wanted.
TEST(SpeechEncoder, TheSamplingFrequencyOfItsInput) {
  struct Case {
    int rate;
    int returned;
    QVERRORCODE_TAG write;
  };
  Encoding encoding;
  EXPECT_EQ(encoding.encoder->GetCodecSampleRate(), 8000);
  for (const Case& c : {Case{499'750, QVERR_BAD_STATE, QVERR_BAD_STATE},
                        {0, 0, QVERR_OK},
                        {1, QVERR_BAD_STATE, QVERR_BAD_STATE},
                        {8000, 8000, QVERR_OK},
                        {-1, QVERR_BAD_STATE, QVERR_BAD_STATE},
                        {16000, 0, QVERR_OK}}) {
    EXPECT_EQ(encoding.encoder->SetInputSampleRate(c.rate), c.returned) << c.rate;
    EXPECT_EQ(encoding.encoder->GetInputSampleRate(), c.rate);
    EXPECT_TRUE(encoding.encoder->Reset());
    EXPECT_EQ(encoding.Write(Samples(100)), c.write) << c.rate;
  }
}

TEST(SpeechEncoder, ConvertsAsTheResamplingAccessorDoes) {
  const Samples input = tests::Noise(30001, 20000);
  for (const int rate : {6000, 16000, 44100}) {
    tests::MadeSource source(rate, 1, [next = input]() mutable { return std::exchange(next, {}); });
    const ResamplingMediaAccessorPtr resampler(ResamplingMediaAccessor::CreateInstance());
    resampler->SetOutputSamplingFrequency(8000);
    ASSERT_EQ(resampler->SetSource(&source), QVERR_OK);
    Samples expected = tests::PullAll(*resampler);
    expected.resize((expected.size() + 79) / 80 * 80);

    Encoding encoding;
    EXPECT_EQ(encoding.encoder->SetInputSampleRate(rate), 0);
    EXPECT_EQ(encoding.Write(Samples(5000, 9000)), QVERR_OK);
    EXPECT_TRUE(encoding.encoder->Reset());
    engineRecord.encoded.clear();
    for (const std::ptrdiff_t most : {1, 1000, 30001}) {  // a stream each
      for (auto from = input.begin(); from != input.end();) {
        const auto to = from + std::min(most, input.end() - from);
        ASSERT_EQ(encoding.Write(Samples(from, to)), QVERR_OK);
        from = to;
      }
      EXPECT_EQ(encoding.Write({}), QVERR_OK);
      EXPECT_EQ(Joined(std::exchange(engineRecord.encoded, {})), expected) << rate << ' ' << most;
    }
  }
}

TEST(SpeechEncoder, FailuresInTheirOrder) {
  Encoding encoding;
  encoding.encoder->SetSink(nullptr);
  InitializeMediaAccessorLibrary(nullptr, [](const char*) { return QVERR_INVALID_ARGUMENT; });
  EXPECT_EQ(encoding.Write(Samples(80)), QVERR_NOT_LICENSED);
  InitializeMediaAccessorLibrary(MediaAccessorLicenceQuery{}, nullptr);
  EXPECT_EQ(encoding.Write(Samples(80)), QVERR_NO_SINK);
  encoding.encoder->SetSink(&encoding.sink);
  EXPECT_EQ(encoding.encoder->Write(nullptr, 1), QVERR_INVALID_ARGUMENT);
  EXPECT_EQ(encoding.encoder->SetChannelCount(2), QVERR_UNSUPPORTED_CHANNELS);
  EXPECT_EQ(encoding.encoder->CheckChannelCount(1), QVERR_OK);
  EXPECT_EQ(encoding.Write(Samples(79, 1)), QVERR_OK);
  EXPECT_TRUE(encoding.encoder->Reset());
  EXPECT_EQ(engineRecord.starts, 2);
  EXPECT_EQ(encoding.Write(Samples(80, 2)), QVERR_OK);
  EXPECT_EQ(Joined(engineRecord.encoded), Samples(80, 2)) << "nothing from before the reset";
  encoding.sink.refused = 2;
  EXPECT_EQ(encoding.Write(Samples(80)), QVERR_FILE_IO);
  encoding.sink.throws = true;
  EXPECT_EQ(encoding.Write(Samples(80)), QVERR_CREATE_FAILED);
}

// What the rest of the call holds, more than a frame here, is lost.
TEST(SpeechEncoder, AnEngineThatFails) {
  SpeechEngine engine = tests::kFakeG729A;
  engine.Encode = [](EngineHandle* handle, const short* samples, unsigned char* data,
                     std::size_t* bytes) noexcept {
    if (samples[0] == 1) return EngineStatus::kBadArgument;
    return tests::kFakeG729A.Encode(handle, samples, data, bytes);
  };
  Encoding encoding(IPPCoder::G729A, &engine);
  Samples samples(850, 1);
  std::fill_n(samples.begin(), 80, short{2});
  encoding.sink.refused = 1;
  EXPECT_EQ(encoding.Write(samples), QVERR_BAD_FORMAT) << "whatever the sink says";
  EXPECT_EQ(encoding.Write(Samples(79, 3)), QVERR_OK);
  EXPECT_EQ(encoding.sink.pushes.size(), 1U);
  EXPECT_EQ(encoding.Write(Samples(1, 3)), QVERR_OK);
  EXPECT_EQ(engineRecord.encoded.back(), Samples(80, 3));
}

}  // namespace
