// A block of Microsoft ADPCM that is being decoded, for the plain code and for the vector
// instructions.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>

namespace Quorvex {

/// How many samples of different chains are decoded side by side.
inline constexpr std::size_t kMicrosoftADPCMChains = 4;

/// The samples of one channel of a block: each waits for the one before it.
struct MicrosoftADPCMChain {
  /// What a code does.
  struct Move {
    int deltas;      // to add to what was predicted
    int adaptation;  // new delta over the old, times 256
  };
  static constexpr Move kMoves[] = {
      {0, 230},  {1, 230},  {2, 230},  {3, 230},  {4, 307},  {5, 409},  {6, 512},  {7, 614},
      {-8, 768}, {-7, 614}, {-6, 512}, {-5, 409}, {-4, 307}, {-3, 230}, {-2, 230}, {-1, 230}};
  static constexpr int kSmallestDelta = 16;

  int first = 0;  // factors, 16-bit
  int second = 0;
  int delta = 0;
  int before = 0;  // the last sample
  int beforeThat = 0;

  /// @param code  0 to 15.
  short Decode(unsigned code) {
    const Move& move = kMoves[code];
    // Rounded down, both: dividing would round towards zero.
    const int predicted = Sum(Product(before, first), Product(beforeThat, second)) >> 8;
    const int value = std::clamp(Sum(predicted, Product(move.deltas, delta)), -32'768, 32'767);
    beforeThat = before;
    before = value;
    delta = std::max(Product(move.adaptation, delta) >> 8, kSmallestDelta);
    return static_cast<short>(value);
  }

 private:
  // What no encoder writes may leave 32 bits, and wraps then: limiting it would take time.
  static int Product(int a, int b) {
    return static_cast<int>(static_cast<unsigned>(a) * static_cast<unsigned>(b));
  }
  static int Sum(int a, int b) {
    return static_cast<int>(static_cast<unsigned>(a) + static_cast<unsigned>(b));
  }
};

/// A byte of codes makes two samples, of the one channel or of each, the upper half first.
template <std::size_t kChannels>
struct MicrosoftADPCMBlock {
  const unsigned char* codes = nullptr;
  short* samples = nullptr;  // that the codes make
  std::array<MicrosoftADPCMChain, kChannels> chains;
};

template <std::size_t kChannels>
using MicrosoftADPCMGroup =
    std::array<MicrosoftADPCMBlock<kChannels>, kMicrosoftADPCMChains / kChannels>;

/// Decodes codes with vector instructions, with the same result to the bit, and leaves the chains
/// behind them. @return how many of the first bytes of each block, the others being left: 0 where
/// the processor has no such instructions.
template <std::size_t kChannels>
std::size_t DecodeMicrosoftADPCMVector(MicrosoftADPCMGroup<kChannels>& blocks,
                                       std::size_t bytes) noexcept;

}  // namespace Quorvex
