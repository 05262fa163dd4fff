// Codings of the FFmpeg module, against what the program ffmpeg makes of the same files.
#include "compression/posix/ffmpeg_driver.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "formats/wav/wav_header.h"
#include "platform/riff_stream.h"
#include "platform/text.h"
#include "tests/test_files.h"

namespace {

using namespace Quorvex;
using tests::Bytes;

struct Wave {
  WaveFormat format;
  Bytes data;
};

Wave ReadWave(const std::string& name) {
  const std::string path = tests::Fixture(name + ".wav");
  platform::RiffStream stream;
  WAVHeader header;
  EXPECT_TRUE(stream.Open(platform::Widen(path).c_str()));
  EXPECT_EQ(ReadWAVHeader(stream, header), QVERR_OK);
  const Bytes file = tests::ReadBytes(path);
  const auto data = file.begin() + static_cast<std::ptrdiff_t>(header.dataOffset);
  return {header.format, {data, data + header.dataSize}};
}

// Gives a converter a whole stream as a reader does: pieces of it, whole blocks first. False when
// it fails.
bool ConvertAll(Converter& converter, const Bytes& data, std::size_t piece, std::size_t room,
                Bytes& output) {
  Bytes pending, block(room != 0 ? room : converter.OutputBytes(piece));
  std::size_t given = 0;
  const auto convert = [&](ConvertExtent extent) {
    std::size_t used = 0, produced = 0;
    do {
      if (!converter.Convert(pending, extent, block, used, produced)) return false;
      pending.erase(pending.begin(), pending.begin() + static_cast<std::ptrdiff_t>(used));
      output.insert(output.end(), block.begin(),
                    block.begin() + static_cast<std::ptrdiff_t>(produced));
    } while (used > 0 || produced > 0);
    return true;
  };
  while (given < data.size()) {
    const auto begin = data.begin() + static_cast<std::ptrdiff_t>(given);
    const std::size_t bytes = std::min(piece, data.size() - given);
    pending.insert(pending.end(), begin, begin + static_cast<std::ptrdiff_t>(bytes));
    given += bytes;
    if (!convert(ConvertExtent::kWholeBlocks)) return false;
  }
  return convert(ConvertExtent::kAnything) && pending.empty() && convert(ConvertExtent::kEnd);
}

constexpr unsigned kAsReadersAsk = kSuggestTag | kSuggestChannels | kSuggestBitsPerSample;

std::unique_ptr<Converter> OpenDecoder(const WaveFormat& source) {
  WaveFormat target = PCM16Format(source.channels, 0);
  if (FFmpegDriver().Suggest(source, target, kAsReadersAsk) != Suggestion::kMade) return nullptr;
  EXPECT_EQ(target.samplesPerSecond, source.samplesPerSecond);
  return FFmpegDriver().Open(source, target);
}

Bytes Decode(const Wave& wave, std::size_t piece, std::size_t room) {
  Bytes output;
  const auto converter = OpenDecoder(wave.format);
  EXPECT_TRUE(converter != nullptr && ConvertAll(*converter, wave.data, piece, room, output));
  return output;
}

Bytes Expected(const std::string& name) { return tests::ReadBytes(tests::Fixture(name + ".s16")); }

class FFmpegDriverCoding : public testing::TestWithParam<const char*> {};

TEST_P(FFmpegDriverCoding, IsDecodedAsByFFmpeg) {
  const Wave wave = ReadWave(GetParam());
  const Bytes expected = Expected(GetParam());
  ASSERT_FALSE(expected.empty());
  // What fits the output, and what has to wait for the next call.
  EXPECT_EQ(Decode(wave, 977, 0), expected);
  EXPECT_EQ(Decode(wave, 7, 1001), expected);
}

INSTANTIATE_TEST_SUITE_P(All, FFmpegDriverCoding,
                         testing::Values("ffmpeg_gsm610", "ffmpeg_g726_24k", "ffmpeg_mp3",
                                         "ffmpeg_ac3"),
                         [](const auto& test) { return std::string(test.param); });

TEST(FFmpegDriver, DeliversTheChannelsOfTheRecord) {
  Wave mono = ReadWave("ffmpeg_gsm610");
  mono.format.channels = 2;
  Bytes twice;
  const Bytes once = Expected("ffmpeg_gsm610");
  for (std::size_t i = 0; i < once.size(); i += 2) {
    twice.insert(twice.end(), {once[i], once[i + 1], once[i], once[i + 1]});
  }
  EXPECT_EQ(Decode(mono, 977, 0), twice);

  Wave stereo = ReadWave("ffmpeg_mp3");
  stereo.format.channels = 1;
  Bytes first;
  const Bytes both = Expected("ffmpeg_mp3");
  for (std::size_t i = 0; i < both.size(); i += 4)
    first.insert(first.end(), {both[i], both[i + 1]});
  EXPECT_EQ(Decode(stereo, 977, 0), first);
}

struct RefusedCase {
  const char* name;
  std::function<void(WaveFormat& source, WaveFormat& target)> change;  // of what is possible
};

TEST(FFmpegDriver, RefusesWhatItCannotDo) {
  const std::vector<RefusedCase> cases = {
      {"no such tag", [](auto& source, auto&) { source.tag = 0x7777; }},
      {"linear already", [](auto& source, auto&) { source = PCM16Format(1, 8000); }},
      {"floating point", [](auto& source, auto&) { source.tag = kWaveTagFloat; }},
      {"no channels", [](auto& source, auto&) { source.channels = 0; }},
      {"channels", [](auto& source, auto&) { source.channels = 65; }},
      {"no frequency", [](auto& source, auto&) { source.samplesPerSecond = 0; }},
      {"frequency", [](auto& source, auto&) { source.samplesPerSecond = 0x80000000; }},
      {"extra", [](auto& source, auto&) { source.extra.resize(65'536); }},
      {"extensible", [](auto& source, auto&) { source.tag = kWaveTagExtensible; }},
      {"wanted channels", [](auto&, auto& target) { target.channels = 2; }},
      {"wanted bits", [](auto&, auto& target) { target.bitsPerSample = 8; }},
      {"wanted frequency", [](auto&, auto& target) { target.samplesPerSecond = 16'000; }},
      {"neither is linear", [](auto&, auto& target) { target.tag = kWaveTagGSM610; }},
      {"stereo GSM",
       [](auto& source, auto& target) {
         std::swap(source, target);
         source = PCM16Format(2, 8000);
         target.channels = 2;
       }},
      {"8 bits to GSM",
       [](auto& source, auto& target) {
         std::swap(source, target);
         source.bitsPerSample = 8;
       }},
      {"no encoder",
       [](auto& source, auto& target) {
         std::swap(source, target);
         target.tag = kWaveTagTrueSpeech;
       }},
  };
  for (const RefusedCase& c : cases) {
    SCOPED_TRACE(c.name);
    WaveFormat source = ReadWave("ffmpeg_gsm610").format;
    WaveFormat target = PCM16Format(1, 8000);
    c.change(source, target);
    const WaveFormat before = target;
    const unsigned fields = kAsReadersAsk | kSuggestSamplesPerSecond;
    EXPECT_EQ(FFmpegDriver().Suggest(source, target, fields), Suggestion::kNotPossible);
    EXPECT_EQ(target.blockAlign, before.blockAlign);
    EXPECT_EQ(FFmpegDriver().Open(source, before), nullptr);
  }
}

struct DamageCase {
  const char* name;
  std::function<void(Wave&)> damage;
  bool isConverted;
};

// Nor does a codec's opinion of a file appear on standard error.
TEST(FFmpegDriver, SkipsDamageUnlessThereIsNothingElse) {
  const std::vector<DamageCase> cases = {
      {"a damaged frame",
       [](Wave& wave) { std::fill_n(wave.data.begin() + 200, 100, std::uint8_t{0x55}); }, true},
      {"no frame", [](Wave& wave) { wave.data.assign(1000, 0x55); }, false},
      {"another frequency", [](Wave& wave) { wave.format.samplesPerSecond += 8000; }, false},
      {"nothing", [](Wave& wave) { wave.data.clear(); }, true},
  };
  for (const DamageCase& c : cases) {
    for (const char* const name : {"ffmpeg_ac3", "ffmpeg_mp3"}) {
      SCOPED_TRACE(std::string(c.name) + " in " + name);
      Wave wave = ReadWave(name);
      c.damage(wave);
      const auto converter = OpenDecoder(wave.format);
      ASSERT_NE(converter, nullptr);
      Bytes output;
      testing::internal::CaptureStderr();
      EXPECT_EQ(ConvertAll(*converter, wave.data, 128 << 10, 0, output), c.isConverted);
      EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    }
  }
}

TEST(FFmpegDriver, EncodesGSMAsFFmpegDoes) {
  const Wave expected = ReadWave("ffmpeg_gsm610");
  const WaveFormat source = PCM16Format(1, 8000);
  WaveFormat target = {.tag = kWaveTagGSM610, .channels = 1, .samplesPerSecond = 8000, .extra = {}};
  ASSERT_EQ(FFmpegDriver().Suggest(source, target,
                                   kSuggestTag | kSuggestChannels | kSuggestSamplesPerSecond),
            Suggestion::kMade);
  EXPECT_EQ(target.averageBytesPerSecond, expected.format.averageBytesPerSecond);
  EXPECT_EQ(target.blockAlign, expected.format.blockAlign);
  EXPECT_EQ(target.bitsPerSample, expected.format.bitsPerSample);
  EXPECT_EQ(target.extra, expected.format.extra);

  const Bytes samples = tests::ReadBytes(tests::Fixture("ffmpeg_pcm16_mono.s16"));
  for (const std::size_t room : {0U, 100U}) {
    const auto converter = FFmpegDriver().Open(source, target);
    ASSERT_NE(converter, nullptr);
    Bytes output;
    EXPECT_TRUE(ConvertAll(*converter, samples, 977, room, output));
    EXPECT_EQ(output, expected.data);
  }
}

}  // namespace
