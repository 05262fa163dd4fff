// Microsoft ADPCM, several chains side by side: see ima_blocks.cpp.
//
//     block    predictor8[channels] delta16[channels] second16[channels] first16[channels] codes
//     codes    4 bits each, the upper half of a byte first, the channels in turn
#include <algorithm>
#include <cstring>

#include "compression/posix/adpcm_blocks.h"

namespace Quorvex {
namespace {

constexpr std::size_t kSideBySide = 4;  // chains
constexpr int kSmallestDelta = 16;
// So that the next one does not overflow. No encoder comes near: a sample has 16 bits.
constexpr int kLargestDelta = 0x7FFFFFFF / 768;
// New delta over the old, times 256, by code.
constexpr int kAdaptations[] = {230, 230, 230, 230, 307, 409, 512, 614,
                                768, 614, 512, 409, 307, 230, 230, 230};

int Signed16(const unsigned char* bytes) {
  return static_cast<std::int16_t>(bytes[0] | bytes[1] << 8);
}

// Products of arbitrary factors may leave 32 bits; the right ones never do.
int WrappingProduct(int a, int b) {
  return static_cast<int>(static_cast<unsigned>(a) * static_cast<unsigned>(b));
}
int WrappingSum(int a, int b) {
  return static_cast<int>(static_cast<unsigned>(a) + static_cast<unsigned>(b));
}

struct Chain {
  const unsigned char* codes;
  short* samples;
  int first;  // factors
  int second;
  int delta;
  int before;  // the last sample
  int beforeThat;

  short Decode(int code) {
    // Rounded down, both: dividing would round towards zero.
    const int predicted =
        WrappingSum(WrappingProduct(before, first), WrappingProduct(beforeThat, second)) >> 8;
    const int value = std::clamp(predicted + ((code ^ 8) - 8) * delta, -32'768, 32'767);
    beforeThat = before;
    before = value;
    delta = std::clamp(kAdaptations[code] * delta >> 8, kSmallestDelta, kLargestDelta);
    return static_cast<short>(value);
  }
};

// Takes the header, and its two samples.
Chain Begin(const unsigned char* block, std::size_t channel, std::size_t channels,
            const std::array<MicrosoftADPCMBlocks::Predictor, 256>& predictors, std::size_t frames,
            short* samples) {
  const MicrosoftADPCMBlocks::Predictor& predictor = predictors[block[channel]];
  const unsigned char* const numbers = block + channels + 2 * channel;
  Chain chain{.codes = block + 7 * channels,
              .samples = samples + channel,
              .first = predictor.first,
              .second = predictor.second,
              .delta = Signed16(numbers),
              .before = Signed16(numbers + 2 * channels),
              .beforeThat = Signed16(numbers + 4 * channels)};
  chain.samples[0] = static_cast<short>(chain.beforeThat);
  if (frames > 1) chain.samples[channels] = static_cast<short>(chain.before);
  chain.samples += 2 * channels;
  return chain;
}

// Chains of two channels come in pairs, left and right, which share their bytes.
template <std::size_t kChannels, std::size_t kChains>
void Run(std::array<Chain, kChains> chains, std::size_t frames) {
  for (std::size_t i = 2; i < frames; ++i) {
    const bool isLowerHalf = kChannels == 1 && (i & 1) != 0;
    ForEachConstant<kChains>([&](auto c) {
      Chain& chain = chains[c];
      const bool isRight = kChannels == 2 && c % 2 != 0;
      const int byte = *chain.codes;
      *chain.samples = chain.Decode(isLowerHalf || isRight ? byte & 15 : byte >> 4);
      chain.samples += kChannels;
      if (kChannels == 2 || isLowerHalf) ++chain.codes;
    });
  }
}

template <std::size_t kChannels, class MakeChain>
void RunAll(std::size_t chains, std::size_t frames, const MakeChain& chain) {
  std::size_t number = 0;
  for (; number + kSideBySide <= chains; number += kSideBySide) {
    Run<kChannels, kSideBySide>(
        {chain(number), chain(number + 1), chain(number + 2), chain(number + 3)}, frames);
  }
  for (; number < chains; number += kChannels) {
    if constexpr (kChannels == 1) {
      Run<1, 1>({chain(number)}, frames);
    } else {
      Run<2, 2>({chain(number), chain(number + 1)}, frames);
    }
  }
}

}  // namespace

const std::vector<MicrosoftADPCMBlocks::Predictor>& MicrosoftADPCMBlocks::StandardPredictors() {
  static const std::vector<Predictor> predictors = {{256, 0}, {512, -256}, {0, 0},     {192, 64},
                                                    {240, 0}, {460, -208}, {392, -232}};
  return predictors;
}

// A number that no predictor has is that of the first.
MicrosoftADPCMBlocks::MicrosoftADPCMBlocks(std::size_t channels,
                                           const std::vector<Predictor>& predictors)
    : channels_(channels) {
  predictors_.fill(predictors.front());
  std::copy_n(predictors.begin(), std::min(predictors.size(), predictors_.size()),
              predictors_.begin());
}

void MicrosoftADPCMBlocks::Decode(const unsigned char* blocks, std::size_t count,
                                  std::size_t blockBytes, std::size_t frames,
                                  short* samples) const noexcept {
  const auto chain = [&](std::size_t number) {
    const std::size_t block = number / channels_;
    return Begin(blocks + block * blockBytes, number % channels_, channels_, predictors_, frames,
                 samples + block * frames * channels_);
  };
  if (channels_ == 1) {
    RunAll<1>(count, frames, chain);
  } else {
    RunAll<2>(count * 2, frames, chain);
  }
}

}  // namespace Quorvex
