// The subframe's 60 samples, and four more that count nothing, make four tracks on each of two
// grids: place p of a track is sample 8 p + 2 track + grid. There is one pulse on each track, all
// of them on one grid.
//
//   1. The target, filtered backwards, says for each sample what a pulse there gains. An even
//      sample and the odd one behind have one sign, that of their sum.
//   2. The correlations of the response with itself say what two pulses cost together. With the
//      signs put into them, the search need not know about signs. Those of the even samples stand
//      for the odd ones too.
//   3. All places of the first three tracks are gone through, but the fourth track is searched only
//      where the three gain more than a limit, and only so often.
//
// What is best has the greatest gain^2 / energy, and ratios are compared by cross products.
#include "codecs/engines/g723_1/algebraic_search.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "codecs/engines/g723_1/excitation.h"
#include "codecs/engines/g723_1/fixed_codebook_tables.h"
#include "codecs/engines/sums_of_products.h"

namespace Quorvex::g723_1 {

using namespace fixed_point;

namespace {

constexpr std::size_t kTracks = 4;
constexpr std::size_t kPlaces = 8;
constexpr std::size_t kGrids = 2;
constexpr std::size_t kPositions = kTracks * kPlaces * kGrids;

constexpr std::size_t PositionOf(std::size_t track, std::size_t place, std::size_t grid) noexcept {
  return kTracks * kGrids * place + kGrids * track + grid;
}

using ByPosition = std::array<Word, kPositions>;

// What the search knows of each place. Beyond the subframe all are 0.
struct Pulses {
  ByPosition gains = {};                           ///< -2^13 to 2^13, with the sign
  std::array<bool, kPositions> areNegative = {};   ///< signs
  std::array<ByPosition, kPositions> common = {};  ///< energies, and of two places
};

struct Choice {
  std::size_t grid = 0;
  std::array<std::size_t, kTracks> places = {};
  Word square = 0;
  Word energy = kMostWord;
};

// Half the response, sharpened as the pulses will be.
Subframe Sharpened(int lag, unsigned pitchRow, const Subframe& response) noexcept {
  Subframe sharpened;
  std::ranges::transform(response, sharpened.begin(),
                         [](Word sample) { return ShiftRight(sample, 1); });
  Sharpen(lag, pitchRow, sharpened);
  return sharpened;
}

void SetGains(const Subframe& target, const Subframe& response, Pulses& pulses) noexcept {
  std::array<Long, kSubframeSamples> sums;
  Long peak = 0;
  for (std::size_t i = 0; i < kSubframeSamples; ++i) {
    sums[i] = Correlate(&target[i], response.data(), kSubframeSamples - i);
    peak = std::max(peak, LongAbsolute(sums[i]));
  }
  const int shift = 18 - std::min(16, LongNorm(peak));
  std::ranges::transform(sums, pulses.gains.begin(),
                         [shift](Long sum) { return Low(LongShiftRight(sum, shift)); });
}

void SetSigns(Pulses& pulses) noexcept {
  for (std::size_t i = 0; i < kPositions; i += kGrids) {
    const bool isNegative = pulses.gains[i] + pulses.gains[i + 1] < 0;
    for (std::size_t j = i; j < i + kGrids; ++j) {
      pulses.areNegative[j] = isNegative;
      if (isNegative) pulses.gains[j] = Negate(pulses.gains[j]);
    }
  }
}

// The response at such a level that its energy has 31 bits at most.
Subframe Level(const Subframe& response) noexcept {
  constexpr int kMostEnergy = 32000;
  const Long energy = Correlate(response.data(), response.data(), response.size());
  const int shift = High(energy) > kMostEnergy ? -1 : LongNorm(energy) / 2;
  Subframe level;
  std::ranges::transform(response, level.begin(),
                         [shift](Word sample) { return ShiftLeft(sample, shift); });
  return level;
}

// Two responses have the more in common the earlier they begin, at the same distance.
void SetEnergies(const Subframe& response, Pulses& pulses) noexcept {
  for (std::size_t distance = 0; distance < kSubframeSamples; distance += kGrids) {
    Long sum = 0;
    for (std::size_t i = 0; i + distance < kSubframeSamples; ++i) {
      sum = MultiplyAdd(sum, response[i], response[i + distance]);
      const std::size_t later = kSubframeSamples - 1 - i;
      const std::size_t earlier = later - distance;
      const bool differ = pulses.areNegative[later] != pulses.areNegative[earlier];
      const Word common = differ ? Negate(High(sum)) : High(sum);
      pulses.common[later][earlier] = common;
      pulses.common[earlier][later] = common;
    }
  }
}

// Half between the mean and the most that three pulses gain.
Word Limit(std::size_t grid, const Pulses& pulses) noexcept {
  Word most = 0;
  Long sum = 0;
  for (std::size_t track = 0; track + 1 < kTracks; ++track) {
    Word peak = kLeastWord;
    for (std::size_t place = 0; place < kPlaces; ++place) {
      const Word gain = pulses.gains[PositionOf(track, place, grid)];
      peak = std::max(peak, gain);
      sum += gain;
    }
    most = Add(most, peak);
  }
  const auto mean = static_cast<Word>(sum >> 3);
  return Add(mean, Multiply(Subtract(most, mean), 16384));
}

// Searches the last track. @param places  of the other three.
void SearchLast(std::size_t grid, const std::array<std::size_t, kTracks - 1>& places,
                const Pulses& pulses, Choice& best) noexcept {
  std::array<std::size_t, kTracks> positions;
  for (std::size_t k = 0; k < places.size(); ++k) positions[k] = PositionOf(k, places[k], 0);
  for (std::size_t place = 0; place < kPlaces; ++place) {
    positions[3] = PositionOf(3, place, 0);
    Word gain = 0;
    Long energy = 0;
    for (std::size_t k = 0; k < kTracks; ++k) {
      gain = Add(gain, pulses.gains[positions[k] + grid]);
      energy = MultiplyAdd(energy, pulses.common[positions[k]][positions[k]], 1);
      for (std::size_t j = 0; j < k; ++j) {
        energy = MultiplyAdd(energy, pulses.common[positions[k]][positions[j]], 2);
      }
    }
    const Word square = Multiply(gain, gain);
    const Word cost = Low(energy >> 5);
    if (LongMultiply(square, best.energy) <= LongMultiply(best.square, cost)) continue;
    best = {grid, {places[0], places[1], places[2], place}, square, cost};
  }
}

Choice Search(const Pulses& pulses, SearchBudget& budget) noexcept {
  const Word limit = std::max(Limit(0, pulses), Limit(1, pulses));
  const int tries = budget.ForSubframe();
  int tried = 0;
  Choice best;
  std::array<std::size_t, kTracks - 1> places;
  auto& [i, j, k] = places;
  for (i = 0; i < kPlaces && tried < tries; ++i) {
    for (j = 0; j < kPlaces && tried < tries; ++j) {
      for (k = 0; k < kPlaces && tried < tries; ++k) {
        std::array<Word, kGrids> gains;
        for (std::size_t grid = 0; grid < kGrids; ++grid) {
          gains[grid] =
              Add(Add(pulses.gains[PositionOf(0, i, grid)], pulses.gains[PositionOf(1, j, grid)]),
                  pulses.gains[PositionOf(2, k, grid)]);
        }
        const std::size_t grid = gains[1] > gains[0] ? 1 : 0;
        if (gains[grid] <= limit) continue;
        SearchLast(grid, places, pulses, best);
        ++tried;
      }
    }
  }
  budget.Spend(tried);
  return best;
}

// The pulses through the response.
void AddResponse(const Subframe& response, std::size_t position, bool isNegative,
                 Subframe& filtered) noexcept {
  for (std::size_t i = position; i < kSubframeSamples; ++i) {
    const Word sample = response[i - position];
    filtered[i] = isNegative ? Subtract(filtered[i], sample) : Add(filtered[i], sample);
  }
}

unsigned GainFor(const Subframe& target, Subframe filtered) noexcept {
  for (Word& sample : filtered) sample = ShiftRight(sample, 3);
  const Long common = Correlate(target.data(), filtered.data(), filtered.size());
  if (common <= 0) return 0;
  const Long energy = Correlate(filtered.data(), filtered.data(), filtered.size());
  const int commonNorm = LongNorm(common);
  const int energyNorm = LongNorm(energy);
  const Word half = ShiftRight(High(LongShiftLeft(common, commonNorm)), 1);
  const Word quotient = Divide(half, High(LongShiftLeft(energy, energyNorm)));
  const Word gain = ShiftRight(quotient, commonNorm + 5 - energyNorm);
  unsigned best = 0;
  Word least = kMostWord;
  for (unsigned i = 0; i < kCodeGains.size(); ++i) {
    const Word distance = Absolute(Subtract(gain, kCodeGains[i]));
    if (distance >= least) continue;
    least = distance;
    best = i;
  }
  return best;
}

}  // namespace

void SearchAlgebraic(int lag, const Subframe& target, const Subframe& response,
                     SearchBudget& budget, SubframeIndices& indices) noexcept {
  const Subframe sharpened = Sharpened(lag, indices.pitchRow, response);
  Pulses pulses;
  SetGains(target, sharpened, pulses);
  SetSigns(pulses);
  SetEnergies(Level(sharpened), pulses);
  const Choice choice = Search(pulses, budget);

  indices.grid = static_cast<unsigned>(choice.grid);
  indices.positions = 0;
  indices.signs = 0;
  indices.hasPulseTrain = false;
  Subframe filtered = {};
  for (std::size_t k = 0; k < kTracks; ++k) {
    const std::size_t position = PositionOf(k, choice.places[k], choice.grid);
    indices.positions |= static_cast<unsigned>(choice.places[k] << 3 * k);
    if (!pulses.areNegative[position]) indices.signs |= 1U << k;
    AddResponse(sharpened, position, pulses.areNegative[position], filtered);
  }
  indices.codeGain = GainFor(target, filtered);
}

}  // namespace Quorvex::g723_1
