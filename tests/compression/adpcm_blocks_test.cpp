// Many blocks of Microsoft ADPCM at once, which go side by side, against each block alone.
#include "compression/posix/adpcm_blocks.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace {

using namespace Quorvex;

// Of noise: whatever a code can do to a chain happens, and what no encoder writes.
void ExpectSameSideBySide(const MicrosoftADPCMBlocks& blocks, std::size_t channels) {
  constexpr std::size_t kCount = 23;
  std::minstd_rand random(1);
  for (const std::size_t blockBytes : {blocks.HeaderBytes(), std::size_t{29}, std::size_t{1024}}) {
    std::vector<unsigned char> bytes(kCount * blockBytes);
    for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(random() >> 8);
    for (std::size_t less = 0; less < 2; ++less) {
      const std::size_t frames = blocks.Frames(blockBytes) - less;
      const std::size_t values = frames * channels;
      std::vector<short> together(kCount * values), alone(kCount * values);
      blocks.Decode(bytes.data(), kCount, blockBytes, frames, together.data());
      for (std::size_t b = 0; b < kCount; ++b) {
        blocks.Decode(bytes.data() + b * blockBytes, 1, blockBytes, frames,
                      alone.data() + b * values);
      }
      EXPECT_EQ(together, alone) << channels << ' ' << blockBytes << ' ' << frames;
    }
  }
}

TEST(MicrosoftADPCM, ComesOutTheSameSideBySide) {
  // One for each number that a block can name: the usual ones, and the wildest.
  auto predictors = MicrosoftADPCMBlocks::StandardPredictors();
  predictors.push_back({-32'768, -32'768});
  for (std::size_t i = 0; predictors.size() < 256; ++i) predictors.push_back(predictors[i]);
  for (const std::size_t channels : {std::size_t{1}, std::size_t{2}}) {
    ExpectSameSideBySide(MicrosoftADPCMBlocks(channels, predictors), channels);
  }
}

}  // namespace
