// Microsoft ADPCM, several chains side by side: see ima_blocks.cpp.
//
//     block    predictor8[channels] delta16[channels] second16[channels] first16[channels] codes
//     codes    4 bits each, the upper half of a byte first, the channels in turn
#include <algorithm>

#include "compression/posix/adpcm_blocks.h"
#include "compression/posix/microsoft_adpcm_block.h"
#include "support/header_reader.h"

namespace Quorvex {
namespace {

int Signed16(const unsigned char* bytes) {
  return static_cast<std::int16_t>(LittleEndian16(bytes));
}

// Takes the header, and its two samples.
template <std::size_t kChannels>
MicrosoftADPCMBlock<kChannels> Begin(
    const unsigned char* block, const std::array<MicrosoftADPCMBlocks::Predictor, 256>& predictors,
    std::size_t frames, short* samples) {
  MicrosoftADPCMBlock<kChannels> begun{
      .codes = block + 7 * kChannels, .samples = samples + 2 * kChannels, .chains = {}};
  for (std::size_t c = 0; c < kChannels; ++c) {
    const MicrosoftADPCMBlocks::Predictor& predictor = predictors[block[c]];
    const unsigned char* const numbers = block + kChannels + 2 * c;
    MicrosoftADPCMChain& chain = begun.chains[c];
    chain = {.first = predictor.first,
             .second = predictor.second,
             .delta = Signed16(numbers),
             .before = Signed16(numbers + 2 * kChannels),
             .beforeThat = Signed16(numbers + 4 * kChannels)};
    samples[c] = static_cast<short>(chain.beforeThat);
    if (frames > 1) samples[kChannels + c] = static_cast<short>(chain.before);
  }
  return begun;
}

// @param blocks  by value: nothing that is stored can then be part of a chain.
// @param i       bytes of the codes of each that are done.
// @param values  samples of all channels that the codes of each are to make.
template <std::size_t kChannels, std::size_t kBlocks>
void Run(std::array<MicrosoftADPCMBlock<kChannels>, kBlocks> blocks, std::size_t i,
         std::size_t values) {
  const std::size_t bytes = values / 2;
  for (; i < bytes; ++i) {
    ForEachConstant<kBlocks>([&](auto b) {
      auto& [codes, samples, chains] = blocks[b];
      samples[2 * i] = chains.front().Decode(codes[i] >> 4);
      samples[2 * i + 1] = chains.back().Decode(codes[i] & 15);
    });
  }
  if (values % 2 == 0) return;
  for (auto& [codes, samples, chains] : blocks) {
    samples[values - 1] = chains.front().Decode(codes[bytes] >> 4);
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

template <std::size_t kChannels>
void MicrosoftADPCMBlocks::DecodeAll(const unsigned char* blocks, std::size_t count,
                                     std::size_t blockBytes, std::size_t frames,
                                     short* samples) const noexcept {
  constexpr std::size_t kSideBySide = kMicrosoftADPCMChains / kChannels;
  const std::size_t values = (std::max<std::size_t>(frames, 2) - 2) * kChannels;
  const auto begin = [&](std::size_t number) {
    return Begin<kChannels>(blocks + number * blockBytes, predictors_, frames,
                            samples + number * frames * kChannels);
  };
  std::size_t number = 0;
  for (; number + kSideBySide <= count; number += kSideBySide) {
    MicrosoftADPCMGroup<kChannels> group;
    for (std::size_t b = 0; b < kSideBySide; ++b) group[b] = begin(number + b);
    const std::size_t done = DecodeMicrosoftADPCMVector<kChannels>(group, values / 2);
    Run<kChannels>(group, done, values);
  }
  for (; number < count; ++number) Run<kChannels, 1>({begin(number)}, 0, values);
}

void MicrosoftADPCMBlocks::Decode(const unsigned char* blocks, std::size_t count,
                                  std::size_t blockBytes, std::size_t frames,
                                  short* samples) const noexcept {
  if (channels_ == 1) {
    DecodeAll<1>(blocks, count, blockBytes, frames, samples);
  } else {
    DecodeAll<2>(blocks, count, blockBytes, frames, samples);
  }
}

}  // namespace Quorvex
