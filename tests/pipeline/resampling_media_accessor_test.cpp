// The resampling accessor through its public interface: its states, its samples beside the filter
// in double precision, the end of a stream, and how good the audio is.
#include <MediaAccessor/all.h>
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numbers>
#include <utility>

#include "tests/fake_media.h"
#include "tests/resampling.h"

namespace {

using namespace Quorvex;
using tests::IdealResampling;
using tests::Noise;
using tests::Samples;

ResamplingMediaAccessorPtr ResamplerOf(CMediaAccessor& source, int output) {
  ResamplingMediaAccessorPtr resampler(ResamplingMediaAccessor::CreateInstance());
  EXPECT_EQ(resampler->SetOutputSamplingFrequency(output), QVERR_OK);
  EXPECT_EQ(resampler->SetSource(&source), QVERR_OK);
  return resampler;
}

constexpr std::size_t kRandomSizes = 0;
constexpr std::size_t kWhole = 65536;

Samples Resample(int input, int output, const Samples& samples, std::size_t blockSize = 4096) {
  std::minstd_rand random;
  auto at = samples.begin();
  tests::MadeSource source(input, 1, [&] {
    const std::size_t size = blockSize != kRandomSizes ? blockSize : random() % 2000 + 1;
    const auto begin = at;
    at += std::min(static_cast<std::ptrdiff_t>(size), samples.end() - at);
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
  EXPECT_EQ(resampler->SetOutputSamplingFrequency(4000), QVERR_OK);
  EXPECT_EQ(ReadCode(*resampler), QVERR_INVALID_ARGUMENT) << "nothing at another frequency";
}

TEST(ResamplingMediaAccessor, SourcesWithoutAudio) {
  struct : tests::FakeSource {
    using FakeSource::FakeSource;
    unsigned long GetSamplingFrequency() const override { throw QVERR_FILE_IO; }
  } throwing(1, {Samples(100)});
  EXPECT_EQ(ReadCode(*ResamplerOf(throwing, 16000)), QVERR_FILE_IO);
  tests::FakeSource none(0, {});
  EXPECT_EQ(ReadCode(*ResamplerOf(none, 16000)), QVERR_OK);
}

TEST(ResamplingMediaAccessor, FrequenciesThatDoNotSuit) {
  constexpr unsigned long kMost = 2147483647;
  const std::vector<std::pair<unsigned long, unsigned long>> taken = {
      {62468, 1000}, {44100, 706}, {1, 1}, {1, 1024}, {kMost - 1, kMost}};
  std::vector<std::pair<unsigned long, unsigned long>> pairs = {
      {62469, 1000},      {0, 16000}, {16000, 256}, {1, 1025},
      {kMost + 1, kMost}, {8000, 1},  {kMost, 1},   {4294967295, 8000}};
  pairs.insert(pairs.begin(), taken.begin(), taken.end());
  for (std::size_t i = 0; i < pairs.size(); ++i) {
    const auto& [input, output] = pairs[i];
    SCOPED_TRACE(std::to_string(input) + " to " + std::to_string(output));
    const bool isTaken = i < taken.size();
    // Enough for the longest filter, and not too much for the most samples.
    tests::FakeSource source(1, {Samples(input < 40'000 ? 100 : 3000)});
    source.frequency = input;
    source.atEnd = QVERR_FILE_IO;
    const auto resampler = ResamplerOf(source, static_cast<int>(output));
    EXPECT_EQ(ReadCode(*resampler, !isTaken), isTaken ? QVERR_OK : QVERR_BAD_STATE);
    EXPECT_EQ(ReadCode(*resampler), QVERR_FILE_IO) << "the source's failure comes first";
    tests::FakeSource other(1, {Samples(100)});
    EXPECT_EQ(resampler->SetOutputSamplingFrequency(8000), QVERR_OK);
    EXPECT_EQ(resampler->SetSource(&other), QVERR_OK);
    EXPECT_EQ(ReadCode(*resampler, false), QVERR_OK) << "what went wrong is forgotten";
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
  // Rows that are repeated, as they are, and interpolated; up and down, as far as it goes.
  const int pairs[][2] = {{8000, 16000},  {16000, 8000}, {8000, 8000}, {44100, 16000},
                          {44101, 16000}, {44100, 706},  {30, 1009}};
  for (const auto& [input, output] : pairs) {
    SCOPED_TRACE(std::to_string(input) + " to " + std::to_string(output));
    IdealResampling ideal(input, output);
    const std::size_t length = input >= output ? 4200 : 2100;  // more than a pass takes
    for (const Samples& samples : {Noise(length), Noise(1), tests::FullScaleSquare(length)}) {
      const Samples resampled = Resample(input, output, samples);
      tests::ExpectResampled(ideal, samples, resampled);
      for (const std::size_t size : {std::size_t{1}, kWhole, kRandomSizes}) {
        EXPECT_TRUE(Resample(input, output, samples, size) == resampled) << size;
      }
    }
  }
}

// The source may come to its end, be asked again, and go on: its samples follow the tail, in place
// of the silence of which the tail was made.
TEST(ResamplingMediaAccessor, TheStreamGoesOnAfterItsEnd) {
  const int pairs[][2] = {{44100, 16000}, {8000, 16000}, {44101, 16000}, {44100, 706}};
  for (const auto& [input, output] : pairs) {
    SCOPED_TRACE(std::to_string(input) + " to " + std::to_string(output));
    IdealResampling ideal(input, output);
    Samples all;
    Samples next;
    tests::MadeSource source(input, 1, [&] { return std::exchange(next, {}); });
    const auto resampler = ResamplerOf(source, output);
    std::size_t delivered = 0;
    for (const std::size_t length : {0U, 1U, 1000U, 0U, 2U, 4500U}) {
      next = Noise(length, 32767, static_cast<unsigned>(length + 1));
      all.insert(all.end(), next.begin(), next.end());
      const Samples part = tests::PullAll(*resampler);
      tests::ExpectResampled(ideal, all, part, delivered);
      delivered += part.size();
      EXPECT_EQ(ReadCode(*resampler), QVERR_OK) << "there is one tail";
    }
  }
}

// Channels that the source no longer has are silent, as those are that it did not have when the
// stream began.
TEST(ResamplingMediaAccessor, TheChannelCountMayChangeInTheStream) {
  constexpr std::size_t kFrames = 4321;  // more than a pass takes
  for (const unsigned long begun : {1UL, 2UL, 9UL}) {
    const std::vector<unsigned long> counts = {begun, 3, 1, begun, begun, 2, 10, begun};
    std::vector<Samples> tracks(begun);  // what the channels that there were at first are given
    std::size_t i = 0;
    tests::MadeSource source(16000, counts[0], [&] {
      if (i == counts.size()) return Samples();
      const std::size_t count = counts[i++];
      if (i < counts.size()) source.channels = counts[i];
      Samples block = Noise(kFrames * count, 32767, static_cast<unsigned>(i));
      for (std::size_t s = 0; s < kFrames * begun; ++s) {
        const std::size_t c = s % begun;
        tracks[c].push_back(c < count ? block[s / begun * count + c] : short{0});
      }
      return block;
    });
    const auto resampler = ResamplerOf(source, 11025);
    std::vector<std::pair<std::size_t, Samples>> blocks;
    do {
      const std::size_t channels = source.channels;
      const short* samples = nullptr;
      unsigned long frames = 0;
      ASSERT_EQ(resampler->ReadBlock(samples, frames), QVERR_OK);
      blocks.emplace_back(channels, Samples(samples, samples + frames * channels));
      for (std::size_t s = frames * channels; s < frames * begun; ++s) ASSERT_EQ(samples[s], 0);
    } while (!blocks.back().second.empty());
    std::vector<Samples> expected;
    for (const Samples& track : tracks) expected.push_back(Resample(16000, 11025, track));
    std::size_t place = 0;
    for (const auto& [channels, block] : blocks) {
      ASSERT_LE(place + block.size() / channels, expected[0].size());
      for (std::size_t s = 0; s < block.size(); ++s) {
        const std::size_t c = s % channels;
        ASSERT_EQ(block[s], c < begun ? expected[c][place + s / channels] : 0) << channels;
      }
      place += block.size() / channels;
    }
    EXPECT_EQ(place, expected[0].size()) << begun;
  }
}

// Two tones of whole periods in a span, so that they are at right angles: one that passes and,
// where there is room, one three times as loud that does not. That one is to be 92.5 dB down, 83 dB
// below the other, and rounding the input and the output adds -86 dB each: -80 dB in all.
TEST(ResamplingMediaAccessor, TonesPassOrAreStopped) {
  constexpr int kSpan = 4001;    // output samples; a prime, so that rounding is noise
  constexpr int kSettled = 200;  // and so many before
  struct Case {
    int input;
    int output;
    double passed;   // in parts of the lower Nyquist frequency
    double stopped;  // 0: none
    double gain;     // dB, beside that of the accessor
  };
  const Case cases[] = {{16000, 8000, 0.8, 1.1, 0},    {44100, 16000, 0.1, 1.8, 0},
                        {44101, 16000, 0.7, 1.1, 0},   {8000, 44100, 0.8, 0, 0},
                        {44100, 48000, 0.9, 0, -0.36}, {48000, 8000, 0.9, 1.1, -0.36}};
  const auto decibels = [](double ratio) { return 20 * std::log10(ratio); };
  for (const auto& [input, output, passed, stopped, gain] : cases) {
    SCOPED_TRACE(std::to_string(input) + " to " + std::to_string(output));
    const double turn = 2 * std::numbers::pi / kSpan;
    const double nyquistPeriods = std::min(input, output) / 2.0 * kSpan / output;
    const auto frequency = [&](double part) {  // in radians per output sample
      return turn * std::round(part * nyquistPeriods);
    };
    constexpr double kAmplitude = 8000;
    Samples samples(static_cast<std::size_t>((kSpan + 2L * kSettled) * input / output + 1));
    for (std::size_t i = 0; i < samples.size(); ++i) {
      const double time = static_cast<double>(i) * output / input;
      samples[i] =
          static_cast<short>(std::lrint(kAmplitude * (std::sin(frequency(passed) * time) +
                                                      3 * std::sin(frequency(stopped) * time))));
    }
    const Samples all = Resample(input, output, samples);
    std::complex<double> sum = 0;
    double power = 0;
    for (int i = 0; i < kSpan; ++i) {
      const double sample = all[static_cast<std::size_t>(kSettled + i)];
      sum += std::polar(sample * 2 / kSpan, -frequency(passed) * i);
      power += sample * sample * 2 / kSpan;
    }
    const double amplitude = std::abs(sum);
    EXPECT_NEAR(decibels(amplitude / 0.98 / kAmplitude), gain, gain < 0 ? 0.06 : 0.0015);
    EXPECT_GE(decibels(amplitude / std::sqrt(power - amplitude * amplitude)), 80);
  }
}

// The same block again and again, so that the output, too, is periodic as long as nothing drifts.
TEST(ResamplingMediaAccessor, NothingDriftsInAnHour) {
#if !defined(__SANITIZE_ADDRESS__)
  constexpr int kBlocks = 36'000;
#else
  constexpr int kBlocks = 600;  // a minute, where AddressSanitizer looks at each sample
#endif
  const Samples block = Noise(4410);
  int left = kBlocks;
  tests::MadeSource source(44100, 1, [&] { return left-- > 0 ? block : Samples(); });
  const auto resampler = ResamplerOf(source, 16000);
  std::size_t total = 0;
  Samples steady;
  for (int i = 0; i <= kBlocks; ++i) {
    const short* samples = nullptr;
    unsigned long frames = 0;
    ASSERT_EQ(resampler->ReadBlock(samples, frames), QVERR_OK);
    total += frames;
    if (i == 0 || i == kBlocks) continue;
    if (i == 1) steady.assign(samples, samples + frames);
    ASSERT_TRUE(std::equal(steady.begin(), steady.end(), samples, samples + frames)) << i;
  }
  EXPECT_EQ(total, kBlocks * std::size_t{1600});
}

}  // namespace
