// The resampling accessor through its public interface: its states, its samples beside the filter
// in double precision, the end of a stream, and how good the audio is.
#include <MediaAccessor/all.h>
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numbers>
#include <utility>

#include "tests/fake_media.h"
#include "tests/resampling_reference.h"

namespace {

using namespace Quorvex;
using tests::Noise;
using tests::ReferenceFilter;
using tests::Samples;

ResamplingMediaAccessorPtr ResamplerOf(CMediaAccessor& source, int output) {
  ResamplingMediaAccessorPtr resampler(ResamplingMediaAccessor::CreateInstance());
  EXPECT_EQ(resampler->SetOutputSamplingFrequency(output), QVERR_OK);
  EXPECT_EQ(resampler->SetSource(&source), QVERR_OK);
  return resampler;
}

constexpr std::size_t kRandomSizes = 0;
constexpr std::size_t kWhole = 65536;

Samples Resample(int input, int output, const Samples& samples, unsigned long channels = 1,
                 std::size_t blockSize = 4096) {
  std::minstd_rand random;
  auto at = samples.begin();
  tests::MadeSource source(input, channels, [&] {
    const std::size_t size = blockSize != kRandomSizes ? blockSize : random() % 9000 + 1;
    const auto begin = at;
    at += std::min(static_cast<std::ptrdiff_t>(size * channels), samples.end() - at);
    return Samples(begin, at);
  });
  return tests::PullAll(*ResamplerOf(source, output));
}

// What a read gives when its results held something before.
QVERRORCODE_TAG ReadCode(CMediaAccessor& accessor, bool isEmpty = true) {
  const short before = 0;
  const short* samples = &before;
  unsigned long frames = 7;
  const QVERRORCODE_TAG result = accessor.ReadBlock(samples, frames);
  EXPECT_EQ(samples == nullptr, isEmpty);
  EXPECT_EQ(frames == 0, isEmpty);
  return result;
}

TEST(ResamplingMediaAccessor, Settings) {
  ResamplingMediaAccessorPtr resampler(ResamplingMediaAccessor::CreateInstance());
  tests::FakeSource source(2, {Samples(200)});
  EXPECT_EQ(resampler->GetSamplingFrequency(), 0U);
  EXPECT_EQ(resampler->GetChannelCount(), 0U);
  EXPECT_EQ(ReadCode(*resampler), QVERR_INVALID_ARGUMENT);
  EXPECT_EQ(tests::WideDescription(*resampler), L"No source.");
  EXPECT_EQ(resampler->SetOutputSamplingFrequency(16000), QVERR_OK);
  EXPECT_EQ(resampler->GetSamplingFrequency(), 16000U);
  EXPECT_EQ(ReadCode(*resampler), QVERR_INVALID_ARGUMENT);
  EXPECT_EQ(resampler->SetSource(nullptr), QVERR_NO_SOURCE);
  source.flagged = true;
  EXPECT_EQ(resampler->SetSource(&source), QVERR_INVALID_ARGUMENT);
  EXPECT_EQ(resampler->SetSource(resampler.get()), QVERR_INVALID_ARGUMENT);
  EXPECT_EQ(resampler->GetSource(), nullptr);
  EXPECT_FALSE(resampler->IsFlagged());
  source.flagged = false;
  EXPECT_EQ(resampler->SetSource(&source), QVERR_OK);
  EXPECT_EQ(resampler->GetSource(), &source);
  EXPECT_EQ(resampler->GetChannelCount(), 2U);
  EXPECT_EQ(resampler->SetSource(nullptr), QVERR_NO_SOURCE) << "and nothing changes";
  char narrow[64];
  wchar_t type[64];
  EXPECT_EQ(resampler->GetDescription(narrow, sizeof narrow), 53U);
  EXPECT_STREQ(narrow, "Source: Fake source Output Sampling Frequency: 16000");
  EXPECT_EQ(resampler->GetTypeDescription(type, 64), 53U);
  EXPECT_EQ(type, tests::WideDescription(*resampler));
  for (const int none : {0, -5}) {
    EXPECT_EQ(resampler->SetOutputSamplingFrequency(none), QVERR_OK);
    EXPECT_EQ(resampler->GetSamplingFrequency(), 0U);
    EXPECT_EQ(ReadCode(*resampler), QVERR_INVALID_ARGUMENT) << none;
  }
  EXPECT_EQ(source.lastContext, nullptr);
  resampler->SetOutputSamplingFrequency(8000);
  int context = 0;
  const short* samples = nullptr;
  unsigned long frames = 0;
  EXPECT_EQ(resampler->ReadBlock(samples, frames, &context), QVERR_OK);
  EXPECT_EQ(source.lastContext, &context);
  EXPECT_EQ(frames, 100U - 33) << "the filter looks 33 samples ahead";
  source.flagged = true;
  EXPECT_TRUE(resampler->IsFlagged()) << "the source's answer travels up";
}

TEST(ResamplingMediaAccessor, FrequenciesThatDoNotSuit) {
  const unsigned long pairs[][2] = {{62468, 1000},
                                    {44100, 706},
                                    {1, 1},
                                    {1, 1024},
                                    {2147483646, 2147483647},
                                    {62469, 1000},
                                    {0, 16000},
                                    {16000, 256},
                                    {1, 1025},
                                    {2147483648, 2147483647},
                                    {8000, 1},
                                    {2147483647, 1},
                                    {4294967295, 8000}};
  constexpr int kTaken = 5;  // of them
  int i = 0;
  for (const auto& [input, output] : pairs) {
    SCOPED_TRACE(std::to_string(input) + " to " + std::to_string(output));
    const bool isTaken = i++ < kTaken;
    // Enough for the longest filter, and not too much for the most samples.
    tests::FakeSource source(1, {Samples(input < 40'000 ? 100 : 3000)});
    source.frequency = input;
    source.atEnd = QVERR_FILE_IO;
    const auto resampler = ResamplerOf(source, static_cast<int>(output));
    EXPECT_EQ(resampler->GetChannelCount(), 1U);
    EXPECT_EQ(ReadCode(*resampler, !isTaken), isTaken ? QVERR_OK : QVERR_BAD_STATE);
    EXPECT_EQ(ReadCode(*resampler), QVERR_FILE_IO) << "the source's failure comes first";
    // What went wrong is forgotten with the next setting.
    tests::FakeSource other(1, {Samples(100)});
    EXPECT_EQ(resampler->SetOutputSamplingFrequency(8000), QVERR_OK);
    EXPECT_EQ(resampler->SetSource(&other), QVERR_OK);
    EXPECT_EQ(ReadCode(*resampler, false), QVERR_OK);
  }
}

TEST(ResamplingMediaAccessor, EachSettingBeginsANewStreamOnSilence) {
  const Samples block = Noise(5000);
  const Samples expected = Resample(44100, 16000, block);
  Samples next;
  tests::MadeSource source(44100, 1, [&] { return std::exchange(next, {}); });
  ResamplingMediaAccessorPtr resampler(ResamplingMediaAccessor::CreateInstance());
  for (const bool sourceIsLast : {true, false, true}) {
    if (!sourceIsLast) resampler->SetSource(&source);
    resampler->SetOutputSamplingFrequency(16000);
    if (sourceIsLast) resampler->SetSource(&source);
    next = block;
    EXPECT_EQ(tests::PullAll(*resampler), expected);
    resampler->SetOutputSamplingFrequency(22050);
    next = block;
    ReadCode(*resampler, false);  // leaves samples behind
  }
}

TEST(ResamplingMediaAccessor, EqualsDoublePrecisionInBlocksOfAnySize) {
  const int pairs[][2] = {{8000, 16000},  {16000, 8000}, {44100, 16000},  {48000, 16000},
                          {48000, 8000},  {8000, 44100}, {8000, 8000},    {48000, 44100},
                          {44100, 48000}, {11025, 8000}, {192000, 11025}, {44101, 16000},
                          {8000, 44101},  {44100, 706},  {999, 16},       {30, 1009}};
  for (const auto& [input, output] : pairs) {
    ReferenceFilter reference(input, output);
    const std::size_t length = input >= output ? 6000 : 1000;
    for (const Samples& samples :
         {Noise(length), Noise(1), Noise(10), tests::FullScaleSquare(length)}) {
      SCOPED_TRACE(std::to_string(input) + " to " + std::to_string(output));
      const Samples resampled = Resample(input, output, samples);
      reference.ExpectFrom(samples, resampled);
      for (const std::size_t size :
           {std::size_t{1}, std::size_t{7}, std::size_t{160}, kWhole, kRandomSizes}) {
        EXPECT_TRUE(Resample(input, output, samples, 1, size) == resampled) << size;
      }
    }
  }
}

// The source may come to its end, be asked again, and go on: its samples follow the tail, in place
// of the silence of which the tail was made.
TEST(ResamplingMediaAccessor, TheStreamGoesOnAfterItsEnd) {
  const int pairs[][2] = {{44100, 16000}, {8000, 16000}, {44101, 16000}, {44100, 706}};
  for (const auto& [input, output] : pairs) {
    ReferenceFilter reference(input, output);
    Samples all;
    Samples next;
    tests::MadeSource source(input, 1, [&] { return std::exchange(next, {}); });
    const auto resampler = ResamplerOf(source, output);
    std::size_t delivered = 0;
    for (const std::size_t length : {0U, 1U, 1000U, 0U, 4001U, 2U, 9000U}) {
      SCOPED_TRACE(std::to_string(input) + " to " + std::to_string(output));
      next = Noise(length, 32767, static_cast<unsigned>(length + 1));
      all.insert(all.end(), next.begin(), next.end());
      const Samples part = tests::PullAll(*resampler);
      reference.ExpectFrom(all, part, delivered);
      delivered += part.size();
      EXPECT_EQ(ReadCode(*resampler), QVERR_OK) << "there is one tail";
    }
  }
}

TEST(ResamplingMediaAccessor, ChannelsAreResampledAlike) {
  constexpr std::size_t kFrames = 12003;  // so that there are blocks longer than the buffers
  for (const unsigned long channels : {2UL, 3UL, 5UL, 6UL, 8UL, 9UL}) {
    Samples interleaved(kFrames * channels);
    std::vector<Samples> expected;
    for (unsigned c = 0; c < channels; ++c) {
      const Samples channel = Noise(kFrames, 32767, c + 1);
      for (std::size_t f = 0; f < kFrames; ++f) interleaved[f * channels + c] = channel[f];
      expected.push_back(Resample(16000, 11025, channel));
    }
    const Samples output = Resample(16000, 11025, interleaved, channels, kRandomSizes);
    ASSERT_EQ(output.size(), expected[0].size() * channels);
    for (std::size_t i = 0; i < output.size(); ++i) {
      ASSERT_EQ(output[i], expected[i % channels][i / channels]) << channels << " channels, " << i;
    }
  }
}

TEST(ResamplingMediaAccessor, TheChannelCountMayChangeInTheStream) {
  constexpr std::size_t kFrames = 701;
  const std::vector<unsigned long> counts = {2, 3, 1, 2, 9, 1, 4, 2};
  Samples tracks[2];  // what the two channels that there were at first are given
  std::size_t i = 0;
  tests::MadeSource source(44100, 2, [&] {
    if (i == counts.size()) return Samples();
    const std::size_t count = counts[i++];
    if (i < counts.size()) source.channels = counts[i];
    Samples block = Noise(kFrames * count, 32767, static_cast<unsigned>(i));
    for (std::size_t f = 0; f < kFrames; ++f) {
      tracks[0].push_back(block[f * count]);
      tracks[1].push_back(count > 1 ? block[f * count + 1] : short{0});
    }
    return block;
  });
  const auto resampler = ResamplerOf(source, 16000);
  std::vector<std::pair<unsigned long, Samples>> blocks;
  do {
    const unsigned long channels = source.channels;
    const short* samples = nullptr;
    unsigned long frames = 0;
    ASSERT_EQ(resampler->ReadBlock(samples, frames), QVERR_OK);
    blocks.emplace_back(channels, Samples(samples, samples + frames * channels));
  } while (!blocks.back().second.empty());
  const Samples expected[] = {Resample(44100, 16000, tracks[0]), Resample(44100, 16000, tracks[1])};
  std::size_t place = 0;
  for (const auto& [channels, block] : blocks) {
    ASSERT_LE(place + block.size() / channels, expected[0].size());
    for (std::size_t s = 0; s < block.size(); ++s) {
      const std::size_t c = s % channels;
      ASSERT_EQ(block[s], c < 2 ? expected[c][place + s / channels] : 0) << channels << ": " << s;
    }
    place += block.size() / channels;
  }
  EXPECT_EQ(place, expected[0].size());
  tests::FakeSource none(0, {});
  EXPECT_EQ(resampler->SetSource(&none), QVERR_OK);
}

// Tones of whole periods in kSpan output samples, so that they are at right angles. The span is a
// prime, so that each tone takes as many values as there are samples.
constexpr int kSpan = 4001;

struct Tone {
  double amplitude;
  int periods;  // in the span
};

Samples ResampledTones(int input, int output, const std::vector<Tone>& tones) {
  constexpr int kSettled = 200;  // output samples
  Samples samples(static_cast<std::size_t>((kSpan + 2L * kSettled) * input / output + 1));
  for (std::size_t i = 0; i < samples.size(); ++i) {
    double sum = 0;
    for (const Tone& tone : tones) {
      const double turns = tone.periods * static_cast<double>(output) / input / kSpan;
      sum += tone.amplitude * std::sin(2 * std::numbers::pi * turns * static_cast<double>(i));
    }
    samples[i] = static_cast<short>(std::lrint(sum));
  }
  const Samples all = Resample(input, output, samples);
  return Samples(all.begin() + kSettled, all.begin() + kSettled + kSpan);
}

double Amplitude(const Samples& samples, int periods) {
  std::complex<double> sum = 0;
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const double turns = periods * static_cast<double>(i) / kSpan;
    sum += std::polar<double>(samples[i], -2 * std::numbers::pi * turns);
  }
  return std::abs(sum) * 2 / kSpan;
}

double Decibels(double ratio) { return 20 * std::log10(ratio); }

// Periods in the span of a tone at a part of the Nyquist frequency of a rate.
int Periods(double part, int rate, int output) {
  return static_cast<int>(std::lround(part / 2 * kSpan * rate / output));
}

TEST(ResamplingMediaAccessor, Quality) {
  const int pairs[][2] = {{8000, 16000}, {16000, 8000},  {44100, 16000}, {48000, 8000},
                          {8000, 44100}, {44101, 16000}, {44100, 48000}};
  for (const auto& [input, output] : pairs) {
    SCOPED_TRACE(std::to_string(input) + " to " + std::to_string(output));
    constexpr double kAmplitude = 16384;
    for (const double part : {0.03, 0.25, 0.5, 0.7, 0.8, 0.9}) {
      const int periods = Periods(part, std::min(input, output), output);
      const Samples samples = ResampledTones(input, output, {{kAmplitude, periods}});
      const double amplitude = Amplitude(samples, periods);
      const double gain = Decibels(amplitude / 0.98 / kAmplitude);
      if (part > 0.8) {
        EXPECT_NEAR(gain, -0.36, 0.06) << "at 0.9";
        continue;
      }
      EXPECT_NEAR(gain, 0, 0.0015) << part;
      double rest = -amplitude * amplitude / 2 * kSpan;
      for (const short sample : samples) rest += static_cast<double>(sample) * sample;
      EXPECT_GE(Decibels(amplitude / std::sqrt(2 * rest / kSpan)), 88) << part;
    }
    // The tone that is let pass spreads the rounding of what is left of the other.
    for (const double part : {1.1, 1.8}) {
      if (part * output >= input) continue;
      const int passed = Periods(0.1, output, output);
      const int stopped = Periods(part, output, output);
      const Samples samples = ResampledTones(input, output, {{8000, passed}, {24000, stopped}});
      EXPECT_GE(Decibels(Amplitude(samples, passed) * 3 / Amplitude(samples, stopped)), 92.5)
          << part;
    }
  }
}

// The same block again and again, so that the output, too, is periodic as long as nothing drifts.
TEST(ResamplingMediaAccessor, NothingDriftsInAnHour) {
#if defined(NDEBUG) && !defined(__SANITIZE_ADDRESS__)
  constexpr int kBlocks = 36'000;
#else
  constexpr int kBlocks = 600;  // a minute, where each sample takes long
#endif
  const Samples block = Noise(4410);
  int left = kBlocks;
  tests::MadeSource source(44100, 1, [&] { return left-- > 0 ? block : Samples(); });
  const auto resampler = ResamplerOf(source, 16000);
  std::size_t total = 0;
  Samples steady;
  for (int i = 0;; ++i) {
    const short* samples = nullptr;
    unsigned long frames = 0;
    ASSERT_EQ(resampler->ReadBlock(samples, frames), QVERR_OK);
    if (frames == 0) break;
    total += frames;
    if (i == 1) steady.assign(samples, samples + frames);
    if (i > 1 && i < kBlocks) {
      ASSERT_TRUE(std::equal(steady.begin(), steady.end(), samples, samples + frames)) << i;
    }
  }
  EXPECT_EQ(total, kBlocks * std::size_t{1600});
}

}  // namespace
