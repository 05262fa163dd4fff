// The mixer's loops: the vector variant gives what the plain one gives.
#include "pipeline/mix_loops.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace {

using namespace Quorvex;

std::vector<short> Noise(std::size_t count) {
  std::minstd_rand random(1);
  std::vector<short> samples(count);
  for (short& sample : samples) {
    // Every seventh sample is an extreme, so that sums clip.
    const auto value = random();
    sample = value % 7 == 0 ? (value % 2 == 0 ? short{-32768} : short{32767})
                            : static_cast<short>(value >> 8);
  }
  return samples;
}

TEST(MixLoops, VectorEqualsPlain) {
  const std::vector<std::vector<int>> selections = {
      {0}, {1}, {1, 0}, {0, 0, 1}, {0, 1, 2}, {2, 5}, {0, 1, 2, 3, 4, 5, 6, 7}};
  for (int channels = 2; channels <= 9; ++channels) {
    for (const std::vector<int>& selected : selections) {
      if (*std::max_element(selected.begin(), selected.end()) >= channels) continue;
      for (const MixRule rule : {MixRule::kSum, MixRule::kAverage}) {
        for (const std::size_t frames : {0U, 1U, 7U, 8U, 9U, 16U, 17U, 1000U}) {
          // Exactly as long as the frames, so that reading past the end shows under a sanitizer.
          const auto input = Noise(frames * static_cast<std::size_t>(channels));
          std::vector<short> plain(frames);
          std::vector<short> mixed(frames);
          MixCombinedPlain(rule, input.data(), frames, channels, selected, plain.data());
          MixCombined(rule, input.data(), frames, channels, selected, mixed.data());
          EXPECT_EQ(plain, mixed) << channels << " channels, " << frames << " frames";
        }
      }
    }
  }
}

// The quotient that the vector variant forms in floating point, at every sum that could go wrong.
TEST(MixLoops, AveragesAreExactAtEveryMultiple) {
  for (int count = 3; count <= 8; ++count) {
    std::vector<int> selected;
    for (int c = 0; c < count; ++c) selected.push_back(c);
    std::vector<short> input;
    std::vector<short> expected;
    for (int quotient = -32767; quotient <= 32767; ++quotient) {
      for (const int off : {-1, 0, 1}) {
        const int sum = quotient * count + off;
        if (sum / count < -32767 || sum / count > 32767 || sum < -32768 * count) continue;
        expected.push_back(static_cast<short>(sum / count));
        for (int c = 0, left = sum; c < count; ++c) {
          const int part = std::clamp(left, -32768, 32767);
          input.push_back(static_cast<short>(part));
          left -= part;
        }
      }
    }
    std::vector<short> output(expected.size());
    MixCombined(MixRule::kAverage, input.data(), expected.size(), count, selected, output.data());
    EXPECT_EQ(output, expected) << count;
  }
}

TEST(MixLoops, ManySelectedChannels) {
  const std::vector<int> selected(300, 1);
  const std::vector<short> input = {0, 100, 0, -32768};
  short output[2];
  MixCombined(MixRule::kAverage, input.data(), 2, 2, selected, output);
  EXPECT_EQ(output[0], 100);
  EXPECT_EQ(output[1], -32767);
  MixCombined(MixRule::kSum, input.data(), 2, 2, selected, output);
  EXPECT_EQ(output[0], 30000);
  EXPECT_EQ(output[1], -32767);
  MixCombined(MixRule::kAverage, input.data(), 2, 2, {}, output);
  EXPECT_EQ(output[1], 0) << "the average of nothing is silence";
}

}  // namespace
