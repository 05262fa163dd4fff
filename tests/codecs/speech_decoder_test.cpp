// The speech decoder over engines that write down which frames reach them.
#include <MediaAccessor/all.h>
#include <gtest/gtest.h>

#include <numeric>

#include "codecs/speech_coder.h"
#include "tests/codecs/fake_engine.h"
#include "tests/counting_heap.h"
#include "tests/test_files.h"

namespace {

using namespace Quorvex;
using tests::Bytes;
using tests::engineRecord;
using Frames = std::vector<Bytes>;
using Levels = std::vector<std::vector<int>>;

// A decoder with its sink.
struct Decoding {
  explicit Decoding(IPPCoder::CODEC codec = IPPCoder::G729A, long bitRate = 0)
      : decoder((engineRecord = {}, MakeDecoder(codec, bitRate, tests::FakeEngineOf(codec)))) {
    if (decoder != nullptr) decoder->SetSink(&sink);
  }

  QVERRORCODE_TAG Decode(const Bytes& data) {
    return decoder->Decode(data.data(), static_cast<std::uint32_t>(data.size()));
  }

  // Each push, as the level of each of its frames of 80 samples.
  Levels Pushed() const {
    Levels levels;
    for (const auto& push : sink.pushes) {
      EXPECT_EQ(push.size() % 80, 0U);
      levels.emplace_back();
      for (auto frame = push.begin(); frame != push.end(); frame += 80) {
        levels.back().push_back(*frame);
        EXPECT_EQ(std::count(frame, frame + 80, *frame), 80);
      }
    }
    return levels;
  }

  tests::PushSink<short> sink;
  IPPDecoderPtr decoder;
};

// So many bytes, counting from `first`.
Bytes Count(unsigned char first, std::size_t size) {
  Bytes bytes(size);
  std::iota(bytes.begin(), bytes.end(), first);
  return bytes;
}

Bytes operator+(Bytes first, const Bytes& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

const Bytes kBad(10, tests::kBadFrame);

TEST(SpeechDecoder, TheFramesOfACall) {
  constexpr auto kBare = IPPCoder::G729A;
  constexpr auto kHeadered = IPPCoder::G729A_HEADERED;
  struct Case {
    IPPCoder::CODEC codec;
    bool hasMarker;
    Bytes data;
    Frames decoded;  // by the engine
    Levels pushed;
    QVERRORCODE_TAG result = QVERR_OK;
  };
  const Case cases[] = {
      {kBare, false, {}, {}, {}},
      {kBare, false, Count(1, 15), {Count(1, 10), Count(11, 5) + Bytes(5)}, {{100, 1100}}},
      {kHeadered, false, Count(1, 22), {Count(2, 10), Count(13, 10)}, {{200, 1300}}},
      {kHeadered, false, Count(1, 6), {Count(2, 5) + Bytes(5)}, {{200}}},
      // Wanted: silence without the engine.
      {kBare, false, Bytes(10) + Count(9, 10) + Bytes(3), {Count(9, 10)}, {{0, 900, 0}}},
      {kHeadered, false, Bytes{7} + Bytes(10) + Bytes{8}, {}, {{0, 0}}},
      {kBare, false, Count(3, 10), {Count(3, 10)}, {{300}}},
      {kBare, true, Count(3, 10) + Count(2, 10), {Count(2, 10)}, {{0, 200}}},
      {kHeadered, true, Count(3, 11) + Count(2, 11), {Count(4, 10)}, {{400, 0}}},
      // What stands before a bad frame is good.
      {kBare, false, Count(1, 10) + kBad + Count(2, 10), {Count(1, 10)}, {{100}}, QVERR_BAD_FORMAT},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(&c - cases);
    Decoding decoding(c.codec);
    if (c.hasMarker) decoding.decoder->EnableErasureMarker();
    EXPECT_EQ(decoding.Decode(c.data), c.result);
    EXPECT_EQ(engineRecord.decoded, c.decoded);
    EXPECT_EQ(decoding.Pushed(), c.pushed);
  }
}

TEST(SpeechDecoder, Sizes) {
  struct Case {
    IPPCoder::CODEC codec;
    long bitRate;
    int hertz, frameBytes, chosenRate;
    std::uint64_t samplesOf240;
  };
  for (const Case& c : {Case{IPPCoder::G729A, 1, 8000, 10, 8000, 1920},
                        {IPPCoder::G729A_HEADERED, 0, 8000, 11, 8000, 1680},
                        {IPPCoder::G723_1_53, 0, 8000, 20, 5300, 2880},
                        {IPPCoder::G723_1_63, 0, 8000, 24, 6300, 2400},
                        {IPPCoder::G722, 56000, 16000, 70, 56000, 480}}) {
    const Decoding decoding(c.codec, c.bitRate);
    EXPECT_EQ(decoding.decoder->GetCodec(), c.codec);
    EXPECT_EQ(decoding.decoder->GetSampleRate(), c.hertz);
    EXPECT_EQ(decoding.decoder->GetCompressedFrameBytes(), c.frameBytes);
    EXPECT_EQ(engineRecord.modes.bitRate, c.chosenRate);
    EXPECT_EQ(decoding.decoder->SamplesForBytes(240), c.samplesOf240);
  }
  const Decoding decoding;
  EXPECT_EQ(decoding.decoder->SamplesForBytes(109), 800U);
  EXPECT_EQ(decoding.decoder->SamplesForBytes(0xFFFFFFFF), 34'359'738'320U);
  EXPECT_EQ(decoding.decoder->CheckChannelCount(1), QVERR_OK);
  EXPECT_EQ(decoding.decoder->CheckChannelCount(2), QVERR_UNSUPPORTED_CHANNELS);
}

// A first call ends at its bad frame; then come further calls.
TEST(SpeechDecoder, KeepsTheEndOfWhatAnEarlyStopLeft) {
  struct Case {
    bool keeps;
    Bytes first;
    std::vector<Bytes> then;
    Frames decoded;
    bool isReset = false;
  };
  const Case cases[] = {
      {true, kBad + Count(1, 6), {Count(7, 10)}, {Count(7, 10)}, true},
      {true, kBad + Count(1, 6), {Count(7, 4)}, {Count(1, 10)}},
      {true, kBad + Count(1, 6), {Count(7, 3), {}}, {}},  // pending
      {true, kBad + Count(1, 6), {Count(7, 3), Count(10, 2)}, {Count(1, 10), Bytes{11} + Bytes(9)}},
      {true, kBad + Count(50, 20) + Count(1, 10), {{}}, {Count(1, 10)}},
      {false, kBad + Count(1, 6), {Count(7, 4)}, {Count(7, 4) + Bytes(6)}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(&c - cases);
    Decoding decoding;
    decoding.decoder->SetKeepTail(c.keeps);
    EXPECT_EQ(decoding.Decode(c.first), QVERR_BAD_FORMAT);
    EXPECT_TRUE(!c.isReset || decoding.decoder->Reset());
    EXPECT_EQ(engineRecord.starts, c.isReset ? 2 : 1);
    for (const Bytes& data : c.then) EXPECT_EQ(decoding.Decode(data), QVERR_OK);
    EXPECT_EQ(engineRecord.decoded, c.decoded);
    EXPECT_EQ(decoding.sink.pushes.size(), c.decoded.empty() ? 0U : 1U);
  }
}

// A kept beginning makes a frame more than there is room for.
TEST(SpeechDecoder, PushesBeforeItsRoomOverflows) {
  for (const std::size_t refused : {0U, 1U, 2U}) {
    Decoding decoding;
    decoding.decoder->SetKeepTail(true);
    EXPECT_EQ(decoding.Decode(kBad + Count(1, 6)), QVERR_BAD_FORMAT);
    decoding.sink.refused = refused;
    EXPECT_EQ(decoding.Decode(Count(7, 4) + Bytes(600, 20) + Bytes{40}),
              refused == 0 ? QVERR_OK : QVERR_FILE_IO);
    std::vector<int> first(61, 2000);
    first[0] = 100;
    EXPECT_EQ(decoding.Pushed(), refused == 1 ? (Levels{first}) : (Levels{first, {4000}}));
    EXPECT_EQ(decoding.Decode(Count(41, 9)), QVERR_OK);
    EXPECT_EQ(engineRecord.decoded.back(), refused == 1 ? Count(40, 10) : Count(41, 9) + Bytes(1));
  }
}

TEST(SpeechDecoder, LicenceThenSinkThenData) {
  const Bytes frame = Count(1, 80);
  for (int codec = IPPCoder::G729A; codec <= IPPCoder::G722; ++codec) {
    Decoding decoding(static_cast<IPPCoder::CODEC>(codec));
    decoding.decoder->SetOutput(nullptr);
    InitializeMediaAccessorLibrary(nullptr, [](const char*) { return QVERR_INVALID_ARGUMENT; });
    EXPECT_EQ(decoding.Decode(frame), codec < IPPCoder::G722 ? QVERR_NOT_LICENSED : QVERR_NO_SINK);
    InitializeMediaAccessorLibrary(MediaAccessorLicenceQuery{}, nullptr);
    EXPECT_EQ(decoding.decoder->Decode(nullptr, 1), QVERR_NO_SINK);
    decoding.decoder->SetOutput(&decoding.sink);
    EXPECT_EQ(decoding.decoder->Decode(nullptr, 1), QVERR_INVALID_ARGUMENT);
    EXPECT_EQ(decoding.decoder->Decode(nullptr, 0), QVERR_OK);
    EXPECT_TRUE(engineRecord.decoded.empty());
    decoding.sink.throws = true;
    EXPECT_EQ(decoding.Decode(frame), QVERR_CREATE_FAILED);
  }
}

TEST(SpeechDecoder, AllocatesForTheLargestBlockOnly) {
  tests::CountingHeap heap;
  const ScopedAllocator scope(&heap);
  int needed = 0;  // allocations of a new decoder
  for (heap.budget = 0; Decoding().decoder == nullptr; heap.budget = ++needed) {
    ASSERT_EQ(heap.alive, 0);
  }
  EXPECT_EQ(heap.alive, 0);
  heap.budget = needed;
  Decoding decoding;
  EXPECT_EQ(decoding.Decode(Count(1, 100)), QVERR_CREATE_FAILED);
  heap.budget = 1;
  for (const std::size_t size : {100U, 100U, 13U, 109U}) {
    EXPECT_EQ(decoding.Decode(Count(1, size)), QVERR_OK) << size;
  }
}

}  // namespace
