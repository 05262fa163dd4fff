// G.723.1: beside another decoder and encoder, lost frames, silence, and speech there and back. All
// of its samples and frames are checked with the standard's vectors.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <random>
#include <span>
#include <string>
#include <vector>

#include "tests/engine_coder.h"
#include "tests/likeness.h"
#include "tests/test_files.h"

namespace Quorvex {
namespace {

using tests::Bytes;
using tests::Correlation;
using tests::Level;

constexpr std::size_t kFrame = 240;     // samples
constexpr std::size_t kLookAhead = 60;  // samples by which the codec delays
using Frames = std::vector<Bytes>;
using Samples = std::vector<short>;

const SpeechEngine& Engine() { return *FindSpeechEngine("IPP_G723.1"); }

struct Decoder {
  Samples operator()(const Frames& frames, bool areErased = false) const {
    Samples samples(frames.size() * kFrame);
    for (std::size_t i = 0; i < frames.size(); ++i) {
      const CodedFrame frame{frames[i].data(), frames[i].size(), areErased};
      EXPECT_EQ(coder.Decode(frame, &samples[i * kFrame]), EngineStatus::kOk);
    }
    return samples;
  }

  EngineModes modes = {.bitRate = 6300};
  unsigned char fill = 0xA5;
  const tests::EngineCoder coder{Engine(), {.modes = modes}, fill};
};

struct Encoder {
  Frames operator()(std::span<const short> samples) const {
    Frames frames(samples.size() / kFrame, Bytes(24));
    for (std::size_t i = 0; i < frames.size(); ++i) {
      std::size_t bytes = 0;
      EXPECT_EQ(coder.Encode(&samples[i * kFrame], frames[i].data(), bytes), EngineStatus::kOk);
      frames[i].resize(bytes);
    }
    return frames;
  }

  EngineModes modes = {.bitRate = 6300};
  unsigned char fill = 0xA5;
  const tests::EngineCoder coder{
      Engine(), {.direction = EngineDirection::kEncode, .modes = modes}, fill};
};

Frames ReadFrames(const std::string& name) {
  const Bytes bytes = tests::ReadBytes(tests::Fixture(name));
  Frames frames;
  for (auto at = bytes.begin(); at != bytes.end();) {
    const auto count = static_cast<std::ptrdiff_t>(Engine().FrameBytes(6300, *at));
    if (bytes.end() - at < count) break;
    frames.emplace_back(at, at + count);
    at += count;
  }
  return frames;
}

// The caller.
Samples Speech() {
  const Samples words = tests::ReadSamples(std::string(MEDIA_ACCESSOR_RECORDINGS) + "/call.wav");
  Samples samples;
  for (std::size_t i = 22; i < words.size(); i += 2) samples.push_back(words[i]);
  return samples;
}

// ffmpeg's decoder is exact but for what follows some of the lost frames.
TEST(G7231, DecodesAsFFmpegDoes) {
  const struct {
    const char* frames;
    const char* samples;
    bool postFilter;
  } cases[] = {{"g723_1_speech.g723_1", "g723_1_speech.s16", true},
               {"g723_1_mixed.g723_1", "g723_1_mixed.s16", true},
               {"g723_1_mixed.g723_1", "g723_1_mixed_plain.s16", false}};
  for (const auto& c : cases) {
    const Samples expected = tests::ReadSamples(tests::Fixture(c.samples));
    const Samples decoded =
        Decoder{{.bitRate = 5300, .postFilter = c.postFilter}}(ReadFrames(c.frames));
    ASSERT_EQ(decoded.size(), expected.size()) << c.samples;
    const auto differs = std::ranges::mismatch(decoded, expected).in1;
    EXPECT_EQ(differs, decoded.end())
        << c.samples << " from frame "
        << static_cast<std::size_t>(differs - decoded.begin()) / kFrame << " on";
  }
}

// Its encoder is exact in nearly all frames; these are of the caller, from 0.3 s on.
TEST(G7231, EncodesAsFFmpegDoes) {
  const Frames expected = ReadFrames("g723_1_speech.g723_1");
  const Samples speech = Speech();
  const Frames frames = Encoder()(std::span(speech).subspan(2400, expected.size() * kFrame));
  for (std::size_t i = 0; i < frames.size(); ++i) ASSERT_EQ(frames[i], expected[i]) << i;
}

TEST(G7231, FramesAreAsLongAsTheirTypesSay) {
  constexpr std::size_t kLengths[] = {24, 20, 4, 1};
  Quorvex::EngineOptions options;
  for (const std::size_t type : {0U, 1U}) {
    options.modes.bitRate = type == 0 ? 6300 : 5300;
    options.direction = Quorvex::EngineDirection::kEncode;
    EXPECT_EQ(Engine().OutputBytes(options, 3 * 2 * kFrame), 3 * kLengths[type]);
    options.direction = Quorvex::EngineDirection::kDecode;
    EXPECT_EQ(Engine().OutputBytes(options, 3 * kLengths[type]), 3 * 2 * kFrame);
  }
  const Decoder decoder;
  short samples[kFrame];
  EXPECT_EQ(decoder.coder.Decode({}, samples), EngineStatus::kBadFrame);
  for (const unsigned type : {0U, 1U, 2U, 3U}) {
    Bytes frame(25);
    frame[0] = static_cast<unsigned char>(type);
    for (std::size_t bytes = 0; bytes <= frame.size(); ++bytes) {
      const auto expected = bytes == kLengths[type] ? EngineStatus::kOk : EngineStatus::kBadFrame;
      EXPECT_EQ(decoder.coder.Decode({frame.data(), bytes}, samples), expected)
          << type << ": " << bytes;
    }
  }
}

// Bits of a frame, counted from the lowest one of its first byte on.
struct Field {
  unsigned bit;
  unsigned bits;
  unsigned value = 0;
};

Bytes With(Bytes frame, const std::vector<Field>& fields) {
  for (const Field& field : fields) {
    for (unsigned i = 0; i < field.bits; ++i) {
      unsigned char& byte = frame[(field.bit + i) / 8];
      const unsigned mask = 1U << (field.bit + i) % 8;
      byte = static_cast<unsigned char>((field.value >> i & 1) != 0 ? byte | mask : byte & ~mask);
    }
  }
  return frame;
}

Field Lag(unsigned half, unsigned lag) { return {26 + 9 * half, 7, lag - 18}; }
Field Gains(unsigned subframe, unsigned row, unsigned codeGain) {
  return {44 + 12 * subframe, 12, 24 * row + codeGain};
}

TEST(G7231, AFrameThatNoEncoderMakesCountsAsLost) {
  constexpr unsigned kPulseTrain = 2048;  // beside the gains of short lags
  const struct {
    std::vector<Field> fields;
    bool isLost;
  } cases[] = {{{Lag(0, 141)}, false},
               {{Lag(0, 142)}, true},
               {{Lag(0, 145)}, true},
               {{Lag(1, 141)}, false},
               {{Lag(1, 142)}, true},
               {{Lag(1, 145)}, true},
               {{Gains(0, 169, 23)}, false},
               {{Gains(0, 170, 0)}, true},
               {{Gains(3, 169, 23)}, false},
               {{Gains(3, 170, 0)}, true},
               {{Lag(0, 57), Gains(1, 84, 23)}, false},
               {{Lag(0, 57), Gains(1, 85, 0)}, true},
               {{Lag(1, 57), Gains(2, 84, kPulseTrain + 23)}, false},
               {{Lag(1, 57), Gains(2, 85, kPulseTrain)}, true},
               {{Lag(0, 57), Gains(2, 85, 0)}, false},
               {{Lag(1, 58), Gains(2, 85, 0)}, false}};
  const Frames speech = ReadFrames("g723_1_speech.g723_1");
  const auto decode = [&speech](const Bytes& second, bool isErased) {
    const Decoder decoder;
    decoder({speech[0]});
    Samples samples = decoder({second}, isErased);
    std::ranges::copy(decoder({speech[2]}), std::back_inserter(samples));
    return samples;
  };
  const Samples expected = decode(speech[1], true);
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    const Bytes frame = With(speech[1], cases[i].fields);
    EXPECT_EQ(decode(frame, false) == expected, cases[i].isLost) << i;
  }
}

// At 6.3 kbit/s. A subframe without pulses sounds alike whatever their signs.
TEST(G7231, APlacementThatThereIsNotMakesNoPulses) {
  const struct {
    unsigned count;      // of placements
    unsigned upperStep;  // of their upper parts, in bits 97 on
    Field lower;
    Field signs;
  } subframes[] = {{593'775, 810, {110, 16}, {170, 6}},
                   {142'506, 90, {126, 14}, {176, 5}},
                   {593'775, 9, {140, 16}, {181, 6}},
                   {142'506, 1, {156, 14}, {187, 5}}};
  const Bytes speech = ReadFrames("g723_1_speech.g723_1")[1];
  for (const auto& s : subframes) {
    const auto decode = [&s, &speech](unsigned placement, unsigned signs) {
      const Field upper = {97, 13, (placement >> s.lower.bits) * s.upperStep};
      return Decoder()({With(
          speech,
          {upper, {s.lower.bit, s.lower.bits, placement}, {s.signs.bit, s.signs.bits, signs}})});
    };
    EXPECT_NE(decode(s.count - 1, 0), decode(s.count - 1, 63)) << s.upperStep;
    const Samples withoutPulses = decode(s.count, 0);
    for (const unsigned placement : {s.count, s.count + 1, s.count + 2000}) {
      EXPECT_EQ(decode(placement, 63), withoutPulses) << s.upperStep << ": " << placement;
    }
  }
}

TEST(G7231, LostFramesFadeToSilenceAndTheNextOnesAreHeard) {
  const Frames speech = ReadFrames("g723_1_speech.g723_1");
  const Decoder decoder;
  const std::ptrdiff_t before = 8;
  const Samples heard = decoder({speech.begin(), speech.begin() + before});
  double level = Level(std::span(heard).last(kFrame));
  const Frames lost(1);
  for (int i = 0; i < 2; ++i) {
    const double faded = Level(decoder(lost, true));
    EXPECT_LT(faded, level) << i;
    EXPECT_GT(faded, level / 5) << i;
    level = faded;
  }
  decoder(lost, true);  // rings
  for (int i = 3; i < 10; ++i) EXPECT_LT(Level(decoder(lost, true)), 1) << i;

  const Frames rest(speech.begin() + before, speech.end());
  const Samples expected = tests::ReadSamples(tests::Fixture("g723_1_speech.s16"));
  const Samples again = decoder(rest);
  const std::span<const short> end = std::span(again).last(8 * kFrame);
  EXPECT_GT(Correlation(std::span(expected).last(end.size()), end), 0.99);
}

TEST(G7231, ALostFrameInSilenceGoesOnWithIt) {
  const Frames silence = {{0x02, 0x00, 0x00, 0xA0}, {0x03}};
  const Decoder decoder;
  const Samples expected = Decoder()({silence[0], silence[1]});
  decoder({silence[0]});
  EXPECT_TRUE(std::ranges::equal(decoder({{}}, true), std::span(expected).last(kFrame)));
  EXPECT_GT(Level(expected), 10);
}

TEST(G7231, BeginsAnewWhateverWasInItsMemory) {
  Samples speech = Speech();
  speech.resize(20 * kFrame);
  for (const int bitRate : {5300, 6300}) {
    const EngineModes modes = {.bitRate = bitRate, .voiceActivityDetection = true};
    const Encoder encoder{modes, 0x00};
    const Frames frames = encoder(speech);
    const Decoder decoder{modes, 0x00};
    const Samples decoded = decoder(frames);
    EXPECT_EQ((Encoder{modes, 0xFF}(speech)), frames);
    EXPECT_EQ((Decoder{modes, 0xFF}(frames)), decoded);
    for (EngineHandle* const handle : {encoder.coder.Handle(), decoder.coder.Handle()}) {
      EXPECT_EQ(Engine().Reinitialize(modes, handle), EngineStatus::kOk);
    }
    EXPECT_EQ(encoder(speech), frames);
    EXPECT_EQ(decoder(frames), decoded);
  }
}

// The codec keeps what one hears, not the waveform.
TEST(G7231, SpeechThereAndBack) {
  const Samples speech = Speech();
  const struct {
    int bitRate;
    std::size_t frameBytes;
    double least;  // correlation
  } cases[] = {{5300, 20, 0.93}, {6300, 24, 0.95}};
  for (const auto& c : cases) {
    const Frames frames = Encoder{{.bitRate = c.bitRate}}(speech);
    for (const Bytes& frame : frames) EXPECT_EQ(frame.size(), c.frameBytes);
    const Samples decoded = Decoder()(frames);
    EXPECT_NEAR(Level(decoded) / Level(speech), 1, 0.05);
    const double best = Correlation(speech, decoded, kLookAhead);
    EXPECT_GT(best, c.least) << c.bitRate;
    for (const std::size_t delay : {kLookAhead - 1, kLookAhead + 1}) {
      EXPECT_LT(Correlation(speech, decoded, delay), best) << c.bitRate;
    }
  }
}

TEST(G7231, TheBitRateChangesFromFrameToFrame) {
  Samples speech = Speech();
  speech.resize(40 * kFrame);
  const Encoder encoder;
  Frames frames;
  for (std::size_t i = 0; i < speech.size() / kFrame; ++i) {
    const int bitRate = i % 3 == 0 ? 6300 : 5300;
    EXPECT_EQ(Engine().Control({.bitRate = bitRate}, encoder.coder.Handle()), EngineStatus::kOk);
    frames.push_back(encoder(std::span(speech).subspan(i * kFrame, kFrame)).front());
    EXPECT_EQ(frames.back().size(), bitRate == 6300 ? 24U : 20U) << i;
  }
  EXPECT_GT(Correlation(speech, Decoder()(frames), kLookAhead), 0.9);
}

// The filter of the input takes away what does not change.
TEST(G7231, ExtremesThereAndBack) {
  const struct {
    int low, high;  // three samples of each in turn
    bool highPass;
    double least, most;
  } cases[] = {{0, 0, true, 0, 2},
               {-32768, -32768, true, 0, 2},
               {-8000, -8000, false, 7500, 9500},
               {-32768, 32767, true, 25000, 32768},
               {-32768, 32767, false, 25000, 32768}};
  for (const auto& c : cases) {
    Samples samples(30 * kFrame);
    for (std::size_t i = 0; i < samples.size(); ++i) {
      samples[i] = static_cast<short>(i / 3 % 2 == 0 ? c.high : c.low);
    }
    for (const int bitRate : {5300, 6300}) {
      const Encoder encoder{{.bitRate = bitRate, .highPass = c.highPass}};
      const Samples decoded = Decoder()(encoder(samples));
      const double level = Level(std::span(decoded).last(decoded.size() / 2));
      EXPECT_GE(level, c.least) << c.low << " at " << bitRate;
      EXPECT_LE(level, c.most) << c.low << " at " << bitRate;
    }
  }
}

// Speech between stretches of a quiet noise.
TEST(G7231, OnlySilenceMakesShortFrames) {
  constexpr std::size_t kPause = 40;  // frames
  const Samples speech = Speech();
  std::minstd_rand random(1);
  Samples samples(kPause * kFrame);
  for (short& sample : samples) sample = static_cast<short>(static_cast<int>(random() % 41) - 20);
  const Samples pause = samples;
  samples.insert(samples.end(), speech.begin(), speech.end());
  samples.insert(samples.end(), pause.begin(), pause.end());

  for (const Bytes& frame : Encoder()(pause)) EXPECT_EQ(frame.size(), 24U);
  const Frames frames = Encoder{{.bitRate = 5300, .voiceActivityDetection = true}}(samples);
  const auto count = [](std::span<const Bytes> some, std::size_t bytes) {
    return std::ranges::count(some, bytes, &Bytes::size);
  };
  const std::span<const Bytes> first = std::span(frames).first(kPause);
  const std::span<const Bytes> last = std::span(frames).last(kPause);
  for (const auto& silence : {first, last}) {
    EXPECT_EQ(count(silence.last(kPause / 2), 20), 0);
    EXPECT_GT(count(silence, 1), count(silence, 4));
    EXPECT_GT(count(silence, 4), 0);
  }
  // The speaker pauses, too.
  const std::span<const Bytes> middle = std::span(frames).subspan(kPause, speech.size() / kFrame);
  EXPECT_GT(count(middle, 20), static_cast<std::ptrdiff_t>(middle.size() * 9 / 10));

  const Samples decoded = Decoder()(frames);
  const double level = Level(std::span(decoded).last(kPause / 2 * kFrame));
  EXPECT_GT(level, Level(pause) / 4);
  EXPECT_LT(level, Level(pause) * 2);
}

}  // namespace
}  // namespace Quorvex
