// IMA ADPCM. The samples of one channel of one block are a chain, in which each waits for the one
// before it. So several chains are decoded side by side: the processor then has something to do
// while one of them waits.
//
//     block    header[channels] group[channels] group[channels] ...
//     header   sample16 stepIndex8 reserved8
//     group    eight 4-bit codes, the lower half of a byte first
#include <algorithm>
#include <cstring>

#include "compression/posix/adpcm_blocks.h"
#include "support/header_reader.h"

namespace Quorvex {
namespace {

constexpr std::size_t kHeader = 4;  // bytes
constexpr std::size_t kGroup = 4;   // bytes
constexpr std::size_t kGroupSamples = 8;
constexpr std::size_t kCodes = 16;
constexpr std::size_t kSideBySide = 4;  // chains

constexpr int kSteps[] = {
    7,     8,     9,     10,    11,    12,    13,    14,    16,    17,    19,   21,    23,
    25,    28,    31,    34,    37,    41,    45,    50,    55,    60,    66,   73,    80,
    88,    97,    107,   118,   130,   143,   157,   173,   190,   209,   230,  253,   279,
    307,   337,   371,   408,   449,   494,   544,   598,   658,   724,   796,  876,   963,
    1060,  1166,  1282,  1411,  1552,  1707,  1878,  2066,  2272,  2499,  2749, 3024,  3327,
    3660,  4026,  4428,  4871,  5358,  5894,  6484,  7132,  7845,  8630,  9493, 10442, 11487,
    12635, 13899, 15289, 16818, 18500, 20350, 22385, 24623, 27086, 29794, 32767};
constexpr int kLastStep = static_cast<int>(std::size(kSteps)) - 1;
constexpr int kStepChanges[] = {-1, -1, -1, -1, 2, 4, 6, 8};  // by the lower three bits of a code

// What a code does at a step.
struct Move {
  std::int32_t difference;
  std::uint32_t nextRow;  // first entry of the next step in the table
};

constexpr auto kMoves = [] {
  std::array<Move, std::size(kSteps) * kCodes> moves{};
  for (std::size_t i = 0; i < moves.size(); ++i) {
    const int index = static_cast<int>(i / kCodes);
    const int code = static_cast<int>(i % kCodes);
    const int step = kSteps[index];
    // Each term is cut by itself: no product gives the same.
    int difference = step >> 3;
    if ((code & 1) != 0) difference += step >> 2;
    if ((code & 2) != 0) difference += step >> 1;
    if ((code & 4) != 0) difference += step;
    const int next = std::clamp(index + kStepChanges[code & 7], 0, kLastStep);
    moves[i] = {(code & 8) != 0 ? -difference : difference, static_cast<std::uint32_t>(next) * 16U};
  }
  return moves;
}();

struct Chain {
  const unsigned char* groups;
  short* samples;
  int value;
  std::uint32_t row;

  short Decode(std::uint32_t code) {
    const Move& move = kMoves[row + code];
    value = std::clamp(value + move.difference, -32'768, 32'767);
    row = move.nextRow;
    return static_cast<short>(value);
  }
};

// Takes the header, and its sample.
Chain Begin(const unsigned char* header, const unsigned char* groups, short* samples) {
  const auto value = static_cast<short>(LittleEndian16(header));
  *samples = value;
  const int index = std::min<int>(header[2], kLastStep);
  return {groups, samples, value, static_cast<std::uint32_t>(index) * 16U};
}

// Decodes the groups of some chains. @param channels  the distance of samples, and of groups.
template <std::size_t kChains>
void Run(std::array<Chain, kChains> chains, std::size_t frames, std::size_t channels) {
  std::size_t left = frames - 1;
  while (left > 0) {
    std::uint32_t codes[kChains];
    ForEachConstant<kChains>([&](auto c) {
      std::memcpy(codes + c, chains[c].groups, kGroup);
      chains[c].groups += kGroup * channels;
    });
    const std::size_t count = std::min(left, kGroupSamples);
    for (std::size_t i = 0; i < count; ++i) {
      ForEachConstant<kChains>([&](auto c) {
        chains[c].samples += channels;
        *chains[c].samples = chains[c].Decode(codes[c] & 15);
        codes[c] >>= 4;
      });
    }
    left -= count;
  }
}

}  // namespace

void IMABlocks::Decode(const unsigned char* blocks, std::size_t count, std::size_t blockBytes,
                       std::size_t frames, short* samples) const noexcept {
  const auto chain = [&](std::size_t number) {
    const std::size_t channel = number % channels_;
    const std::size_t block = number / channels_;
    const unsigned char* const start = blocks + block * blockBytes;
    return Begin(start + channel * kHeader, start + HeaderBytes() + channel * kGroup,
                 samples + block * frames * channels_ + channel);
  };
  const std::size_t chains = count * channels_;
  std::size_t number = 0;
  for (; number + kSideBySide <= chains; number += kSideBySide) {
    Run<kSideBySide>({chain(number), chain(number + 1), chain(number + 2), chain(number + 3)},
                     frames, channels_);
  }
  for (; number < chains; ++number) Run<1>({chain(number)}, frames, channels_);
}

}  // namespace Quorvex
