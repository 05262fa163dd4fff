// A sample depends on the one before, so the way from predictor to predictor is kept short: an
// addition and one look-up. All tables are made by the compiler.
#include "formats/vox/vox_decoder.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace Quorvex {
namespace {

// Dialogic ADPCM Algorithm (00-1366-001), table 2: the step sizes.
constexpr std::array kSteps = {16,  17,  19,  21,  23,  25,   28,   31,   34,   37,  41,  45,  50,
                               55,  60,  66,  73,  80,  88,   97,   107,  118,  130, 143, 157, 173,
                               190, 209, 230, 253, 279, 307,  337,  371,  408,  449, 494, 544, 598,
                               658, 724, 796, 876, 963, 1060, 1166, 1282, 1411, 1552};
// Table 1 there: how the three magnitude bits move the index of the step.
constexpr std::array kIndexMoves = {-1, -1, -1, -1, 2, 4, 6, 8};

constexpr int kNibbles = 16;
constexpr int kLastIndex = static_cast<int>(kSteps.size()) - 1;
constexpr int kLowest = -2048;
constexpr int kHighest = 2047;
constexpr int kScale = 16;

constexpr int Difference(int index, int nibble) {
  const int step = kSteps[static_cast<std::size_t>(index)];
  int difference = step / 8;
  if ((nibble & 1) != 0) difference += step / 4;
  if ((nibble & 2) != 0) difference += step / 2;
  if ((nibble & 4) != 0) difference += step;
  return (nibble & 8) != 0 ? -difference : difference;
}

constexpr int kLargestDifference = Difference(kLastIndex, 7);
constexpr int kLowestSum = kLowest - kLargestDifference;
constexpr int kHighestSum = kHighest + kLargestDifference;

// Integer division truncates toward zero, as it is wanted here.
constexpr int Leak(int sum) { return std::clamp(sum * 127 / 128, kLowest, kHighest); }

// Entry 16 x index + nibble.
using StepTable = std::array<std::int16_t, kSteps.size() * kNibbles>;

template <class Entry>
constexpr StepTable MakeStepTable(Entry entry) {
  StepTable table{};
  for (std::size_t i = 0; i < table.size(); ++i) {
    const int place = static_cast<int>(i);
    table[i] = static_cast<std::int16_t>(entry(place / kNibbles, place % kNibbles));
  }
  return table;
}

constexpr StepTable kDifferences = MakeStepTable(Difference);
constexpr StepTable kNextRows = MakeStepTable([](int index, int nibble) {
  const int move = kIndexMoves[static_cast<std::size_t>(nibble & 7)];
  return std::clamp(index + move, 0, kLastIndex) * kNibbles;
});

// The next predictor of every sum of predictor and difference.
constexpr auto kLeaked = [] {
  std::array<std::int16_t, kHighestSum - kLowestSum + 1> table{};
  for (int sum = kLowestSum; sum <= kHighestSum; ++sum) {
    table[static_cast<std::size_t>(sum - kLowestSum)] = static_cast<std::int16_t>(Leak(sum));
  }
  return table;
}();

}  // namespace

void VOXDecoder::Decode(const unsigned char* bytes, std::size_t count, short* samples) noexcept {
  std::ptrdiff_t predictor = predictor_;
  std::ptrdiff_t row = row_;
  const auto next = [&predictor, &row](int nibble) {
    const auto entry = static_cast<std::size_t>(row + nibble);
    predictor = kLeaked[static_cast<std::size_t>(predictor + kDifferences[entry] - kLowestSum)];
    row = kNextRows[entry];
    return static_cast<short>(predictor * kScale);
  };
  for (std::size_t i = 0; i < count; ++i) {
    samples[2 * i] = next(bytes[i] >> 4);
    samples[2 * i + 1] = next(bytes[i] & 15);
  }
  predictor_ = predictor;
  row_ = row;
}

}  // namespace Quorvex
