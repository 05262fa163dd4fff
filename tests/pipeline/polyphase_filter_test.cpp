// The polyphase filter beneath the resampling accessor: every kernel of this machine beside double
// precision, limits, the arithmetic of positions, the taking apart of channels, and running out
// of memory.
#include "pipeline/polyphase_filter.h"

#include <MediaAccessor/all.h>
#include <gtest/gtest.h>

#include <climits>

#include "pipeline/interleaving.h"
#include "pipeline/single_channel_resampler.h"
#include "tests/counting_heap.h"
#include "tests/fake_media.h"
#include "tests/resampling.h"

namespace {

using namespace Quorvex;
using tests::CountingHeap;
using tests::Samples;

constexpr short kGuard = 0x5A5A;

PolyphaseDesign Design(int input, int output) {
  const double x = std::max(1.0, static_cast<double>(input) / output);
  return {input, output, 2 * static_cast<int>(32 * x), 0.95, 9.0, PolyphaseHint::kFast};
}

// Runs a filter over a stream and the silence around it, in passes of random lengths (or in one),
// the input moved in between as far as it may be.
Samples Filtered(const PolyphaseFilter& filter, const Samples& input, bool isDivided) {
  const auto half = static_cast<std::size_t>(filter.Half());
  std::vector<float> buffer(2 * (PolyphaseFilter::kMargin + half + 1) + input.size());
  const std::size_t begin = PolyphaseFilter::kMargin;
  std::copy(input.begin(), input.end(), buffer.data() + begin + half + 1);
  const double end = static_cast<double>(half + 1 + input.size());
  std::minstd_rand random;
  Samples all;
  double time = static_cast<double>(half + 1);
  std::size_t moved = 0;
  while (static_cast<double>(moved) + time < end) {
    if (isDivided) {
      const std::size_t most = (static_cast<std::size_t>(time) - half - 1) / kPolyphaseStep;
      const std::size_t distance = kPolyphaseStep * (random() % (most + 1));
      moved += distance;
      time -= static_cast<double>(distance);
    }
    const int left = static_cast<int>(end) - static_cast<int>(moved) - static_cast<int>(time);
    const int length = isDivided ? std::min(left, static_cast<int>(random() % 300)) : left;
    std::size_t count = filter.OutputCount(length, time);
    Samples output(count + 2, kGuard);
    EXPECT_EQ(
        filter.Process(buffer.data() + begin + moved, length, 0.98, time, output.data() + 1, count),
        QVERR_OK);
    EXPECT_EQ(count, output.size() - 2);
    EXPECT_EQ(output.front(), kGuard);
    EXPECT_EQ(output.back(), kGuard);
    all.insert(all.end(), output.begin() + 1, output.end() - 1);
  }
  return all;
}

TEST(PolyphaseFilter, EveryKernelEqualsDoublePrecision) {
  // Rows that are repeated, as they are, and interpolated.
  const int pairs[][2] = {{16000, 8000}, {8000, 16000}, {48000, 16000}, {44100, 16000},
                          {8000, 44100}, {7, 5},        {1600, 100},    {44101, 16000},
                          {8000, 44101}, {62431, 1001}};
  for (const auto& [from, to] : pairs) {
    tests::IdealResampling ideal(from, to);
    for (const PolyphaseKernel* kernel : PolyphaseKernels()) {
      SCOPED_TRACE(std::string(kernel->name) + ", " + std::to_string(from) + " to " +
                   std::to_string(to));
      EXPECT_TRUE(kernel->isSupported());
      PolyphaseFilter filter;
      ASSERT_EQ(filter.Initialize(Design(from, to), kernel), QVERR_OK);
      for (const Samples& input : {tests::Noise(1001), tests::FullScaleSquare(1001)}) {
        const Samples output = Filtered(filter, input, false);
        tests::ExpectResampled(ideal, input, output);
        EXPECT_TRUE(Filtered(filter, input, true) == output) << "divided into passes";
      }
    }
  }
  EXPECT_STREQ(PolyphaseKernels().back()->name, "plain");
}

TEST(PolyphaseFilter, DesignsHaveLimits) {
  const double none = std::numeric_limits<double>::quiet_NaN();
  const std::vector<PolyphaseDesign> refused = {
      {0, 1, 64, 0.95, 9},    {1, 0, 64, 0.95, 9},    {-1, 1, 64, 0.95, 9},
      {1, -1, 64, 0.95, 9},   {1, 1025, 64, 0.95, 9}, {1, INT_MAX, 64, 1, 9},
      {65, 1, 64, 0.95, 9},   {1, 1, 0, 0.95, 9},     {1, 1, 65, 0.95, 9},
      {1, 1, -64, 0.95, 9},   {1, 1, 4002, 0.95, 9},  {1, 1, 64, 0, 9},
      {1, 1, 64, 1.01, 9},    {1, 1, 64, none, 9},    {1, 1, 64, 0.95, -0.1},
      {1, 1, 64, 0.95, 20.1}, {1, 1, 64, 0.95, none}};
  const std::vector<PolyphaseDesign> taken = {
      {1, 1, 2, 0.95, 9},  {1, 1024, 64, 0.01, 0},         {1, 1, 4000, 1, 20},
      {64, 1, 4000, 1, 9}, {192000, 11025, 1114, 0.95, 9}, {INT_MAX, INT_MAX - 1, 64, 1, 9}};
  CountingHeap heap;
  const ScopedAllocator scope(&heap);
  PolyphaseFilter filter;
  std::size_t bytes = 1;
  double time = 33;
  EXPECT_EQ(filter.Process(nullptr, 1, 1, time, nullptr, bytes), QVERR_BAD_STATE);
  for (const PolyphaseDesign& design : refused) {
    SCOPED_TRACE(&design - refused.data());
    EXPECT_EQ(PolyphaseFilter::GetSize(design, bytes), QVERR_BAD_STATE);
    EXPECT_EQ(bytes, 0U);
    EXPECT_EQ(filter.Initialize(design), QVERR_BAD_STATE);
  }
  EXPECT_EQ(heap.allocations, 0);
  for (const PolyphaseDesign& design : taken) {
    SCOPED_TRACE(&design - taken.data());
    EXPECT_EQ(PolyphaseFilter::GetSize(design, bytes), QVERR_OK);
    EXPECT_GT(bytes, 0U);
    EXPECT_LE(bytes, PolyphaseLayout::kMostBytes + 256);
    EXPECT_EQ(filter.Initialize(design), QVERR_OK);
  }
}

// Also after a resampler has moved its input: nothing is lost, however long a stream is.
TEST(FrequencyRatio, TimesArePositions) {
  std::minstd_rand random;
  for (const int l : {1, 2, 3, 160, 441, 16000, 65537, INT_MAX - 1, INT_MAX}) {
    const FrequencyRatio ratio(l == 1 ? 1 : l - 1, l);
    ASSERT_EQ(ratio.L(), l);
    for (int i = 0; i < 2000; ++i) {
      const std::int64_t phases[] = {0, l - 1, l / 2, static_cast<std::int64_t>(random()) % l};
      const InputPosition position = {static_cast<std::int64_t>(random() % 10'000), phases[i % 4]};
      const auto moved = static_cast<std::int64_t>(random()) % (position.sample + 1);
      const InputPosition back =
          ratio.PositionAt(ratio.TimeAt(position) - static_cast<double>(moved));
      ASSERT_EQ(back.sample, position.sample - moved) << l;
      ASSERT_EQ(back.phase, position.phase) << l;
    }
  }
}

TEST(Interleaving, TakesApartAndPutsTogether) {
  for (std::size_t channels = 1; channels <= 9; ++channels) {
    for (const std::size_t frames : {0U, 1U, 7U, 8U, 9U, 15U, 16U, 17U, 18U, 23U, 24U, 1001U}) {
      SCOPED_TRACE(std::to_string(frames) + " of " + std::to_string(channels));
      // Exactly as long as the frames, so that reading past the end shows under a sanitizer.
      const Samples input = tests::Noise(frames * channels);
      std::vector<std::vector<float>> split(channels, std::vector<float>(frames + 1, 0.5F));
      std::vector<Samples> tracks(channels, Samples(frames));
      std::vector<float*> outputs;
      std::vector<const short*> inputs;
      for (auto& track : split) outputs.push_back(track.data());
      Deinterleave(input.data(), frames, channels, channels, outputs.data());
      for (std::size_t c = 0; c < channels; ++c) {
        for (std::size_t f = 0; f < frames; ++f) {
          tracks[c][f] = input[f * channels + c];
          ASSERT_EQ(split[c][f], tracks[c][f]) << c << ", frame " << f;
        }
        EXPECT_EQ(split[c][frames], 0.5F) << "nothing is written after the end";
        inputs.push_back(tracks[c].data());
      }
      Samples joined(frames * channels + 1, kGuard);
      Interleave(inputs.data(), channels, frames, channels, joined.data());
      EXPECT_EQ(joined.back(), kGuard);
      joined.pop_back();
      EXPECT_EQ(joined, input);
    }
  }
}

TEST(ResamplingMediaAccessor, SettingUpFailsCleanlyAtEveryAllocation) {
  CountingHeap heap;
  const ScopedAllocator scope(&heap);
  QVERRORCODE_TAG result = QVERR_CREATE_FAILED;
  for (int budget = 0; result != QVERR_OK; ++budget) {
    ASSERT_LT(budget, 20);
    tests::FakeSource source(2, {Samples(200), Samples(200)});
    heap.budget = budget;
    ResamplingMediaAccessorPtr resampler(ResamplingMediaAccessor::CreateInstance());
    ASSERT_EQ(resampler == nullptr, budget == 0);
    if (resampler == nullptr) continue;
    resampler->SetOutputSamplingFrequency(16000);
    EXPECT_EQ(resampler->SetSource(&source), QVERR_OK);
    heap.budget = -1;
    const short* samples = nullptr;
    unsigned long frames = 0;
    result = resampler->ReadBlock(samples, frames);
    EXPECT_EQ(result, frames == 0 ? QVERR_CREATE_FAILED : QVERR_OK);
    EXPECT_EQ(resampler->SetSource(&source), QVERR_OK);
    EXPECT_EQ(resampler->ReadBlock(samples, frames), QVERR_OK) << "with memory it begins anew";
    EXPECT_EQ(frames, 2U * (100 - 33));
  }
  EXPECT_EQ(heap.alive, 0);
}

// What there is no memory for is dropped or silent, and the samples after it are in their places.
TEST(ResamplingMediaAccessor, MemoryRunsOutWhileReading) {
  struct Step {
    unsigned long channels;
    std::size_t frames;
    int budget;  // in allocations; -1: all that is wanted
  };
  // Nine channels leave a large block behind, so that a short channel meets one that is whole.
  const std::vector<Step> steps = {
      {2, 100, 0},    {2, 100, 1},   {2, 100, 2},    {2, 100, -1},  {9, 9000, -1}, {2, 20000, 1},
      {2, 20000, -1}, {2, 30000, 0}, {1, 40000, 1},  {2, 50000, 1}, {2, 50000, 2}, {9, 50000, 2},
      {2, 60000, 1},  {1, 60000, 0}, {2, 60000, -1}, {1, 1000, -1}, {2, 0, -1},
  };
  CountingHeap heap;
  const ScopedAllocator scope(&heap);
  std::vector<Samples> whole(steps.size());
  for (const bool isLimited : {false, true}) {
    std::size_t next = 0;
    tests::MadeSource source(8000, 2, [&] {
      const Step& step = steps[next++];
      if (next < steps.size()) source.channels = steps[next].channels;
      if (isLimited) heap.budget = step.budget;
      return tests::Noise(step.frames * step.channels, 1000);
    });
    ResamplingMediaAccessorPtr resampler(ResamplingMediaAccessor::CreateInstance());
    resampler->SetOutputSamplingFrequency(16000);
    resampler->SetSource(&source);
    std::size_t delivered = 0;
    while (next < steps.size()) {
      const short* samples = nullptr;
      unsigned long frames = 0;
      const QVERRORCODE_TAG result = resampler->ReadBlock(samples, frames);
      const std::size_t step = next - 1;
      if (isLimited && result == QVERR_CREATE_FAILED) {
        EXPECT_EQ(samples, nullptr);
        continue;
      }
      ASSERT_EQ(result, QVERR_OK);
      const Samples block(samples, samples + frames * steps[step].channels);
      ++delivered;
      if (!isLimited) {
        whole[step] = block;
      } else if (steps[step].budget < 0) {
        EXPECT_TRUE(block == whole[step]) << step;
      } else {
        EXPECT_LE(block.size(), whole[step].size());
        for (const short sample : block) ASSERT_LT(std::abs(sample), 5000) << step;
      }
    }
    EXPECT_EQ(delivered < steps.size(), isLimited);
  }
  EXPECT_EQ(heap.alive, 0);
}

}  // namespace
