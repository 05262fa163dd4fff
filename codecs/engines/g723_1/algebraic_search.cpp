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
#include <numeric>

#include "codecs/engines/backward_filter.h"
#include "codecs/engines/g723_1/excitation.h"
#include "codecs/engines/g723_1/fixed_codebook_tables.h"
#include "codecs/engines/sums_of_products.h"

namespace Quorvex::g723_1 {

using namespace fixed_point;

namespace {

constexpr std::size_t kTracks = 4;
constexpr std::size_t kPlaces = 8;
constexpr std::size_t kGrids = 2;
constexpr std::size_t kPairs = kSubframeSamples / kGrids;  // of an even and an odd sample
constexpr std::size_t kRanks = kTracks * kPlaces;          // of pairs, two of them beyond
constexpr std::size_t kLast = kTracks - 1;

constexpr std::size_t PositionOf(std::size_t track, std::size_t place, std::size_t grid) noexcept {
  return kGrids * (kTracks * place + track) + grid;
}

// A pair in the order of the tables below: track by track.
constexpr std::size_t RankOf(std::size_t track, std::size_t place) noexcept {
  return track * kPlaces + place;
}
constexpr auto kRankOfPair = [] {
  std::array<std::size_t, kPairs> ranks = {};
  for (std::size_t i = 0; i < kPairs; ++i) ranks[i] = RankOf(i % kTracks, i / kTracks);
  return ranks;
}();

using ByRank = std::array<Word, kRanks>;

// What the search knows of each pair. Beyond the subframe all are 0.
struct Pulses {
  std::array<ByRank, kGrids> gains = {};   ///< -2^13 to 2^13, with the sign
  ByRank energies = {};                    ///< not below 0
  std::array<ByRank, kRanks> common = {};  ///< of two pairs, both ways
};

// The pairs that have the negative sign, -1, and those that have not, 0.
using Signs = std::array<Word, kPairs>;

Signs SignsOf(const Subframe& backward) noexcept {
  Signs signs;
  for (std::size_t i = 0; i < kPairs; ++i) {
    signs[i] = backward[kGrids * i] + backward[kGrids * i + 1] < 0 ? -1 : 0;
  }
  return signs;
}

// Half the response, sharpened as the pulses will be.
Subframe Sharpened(int lag, unsigned pitchRow, const Subframe& response) noexcept {
  Subframe sharpened;
  std::ranges::transform(response, sharpened.begin(),
                         [](Word sample) { return static_cast<Word>(sample >> 1); });
  Sharpen(lag, pitchRow, sharpened);
  return sharpened;
}

// A chain of MultiplyAdd of the response with itself.
Long EnergyOf(const Subframe& response) noexcept {
  return SaturateLong(ExactEnergy(response.data(), response.size()));
}

void SetGains(const Subframe& backward, const Signs& signs, Pulses& pulses) noexcept {
  for (std::size_t grid = 0; grid < kGrids; ++grid) {
    for (std::size_t i = 0; i < kPairs; ++i) {
      const Word gain = backward[kGrids * i + grid];
      pulses.gains[grid][kRankOfPair[i]] = signs[i] < 0 ? Negate(gain) : gain;
    }
  }
}

// The samples of a grid.
using Half = std::array<Word, kPairs>;

Half HalfOf(const Subframe& response, std::size_t grid) noexcept {
  Half half;
  for (std::size_t i = 0; i < kPairs; ++i) half[i] = response[kGrids * i + grid];
  return half;
}

// @param common  of the pair and those before it; of the last, with itself.
void SetCommon(std::size_t later, const Half& common, Pulses& pulses) noexcept {
  const std::size_t rank = kRankOfPair[later];
  pulses.energies[rank] = common[later];
  for (std::size_t i = 0; i < later; ++i) {
    pulses.common[rank][kRankOfPair[i]] = common[i];
    pulses.common[kRankOfPair[i]][rank] = common[i];
  }
}

// Two responses have the more in common the earlier they begin, at the same distance: a sum for
// each distance goes from the end to the beginning. `Step` adds a product to it.
template <class Step>
void SetEnergies(const Subframe& response, const Signs& signs, const Step& step,
                 Pulses& pulses) noexcept {
  const Half even = HalfOf(response, 0);
  const Half odd = HalfOf(response, 1);
  Half evenBackwards;
  Half oddBackwards;
  std::ranges::reverse_copy(even, evenBackwards.begin());
  std::ranges::reverse_copy(odd, oddBackwards.begin());
  std::array<Long, kPairs> sums = {};  // the greatest distance first
  for (std::size_t k = 0; k < kPairs; ++k) {
    const std::size_t later = kPairs - 1 - k;
    Half common;
    for (std::size_t i = 0; i <= later; ++i) {
      Long& sum = sums[i + k];
      sum = step(step(sum, even[k], evenBackwards[i]), odd[k], oddBackwards[i]);
      common[i] = signs[i] == signs[later] ? High(sum) : Negate(High(sum));
    }
    SetCommon(later, common, pulses);
  }
}

void SetEnergies(const Subframe& response, const Signs& signs, Pulses& pulses) noexcept {
  // No sum is greater than the energy.
  if (ExactEnergy(response.data(), response.size()) > kMostLong) {
    SetEnergies(response, signs, MultiplyAdd, pulses);
  } else {
    SetEnergies(
        response, signs, [](Long sum, Word a, Word b) { return sum + 2 * a * b; }, pulses);
  }
}

Word MostOf(std::size_t track, const ByRank& gains) noexcept {
  const Word* const begin = &gains[RankOf(track, 0)];
  return *std::max_element(begin, begin + kPlaces);
}

// Half between the mean of the gains and the most that three pulses gain.
Word Limit(const ByRank& gains) noexcept {
  Word most = 0;
  Long sum = 0;
  for (std::size_t track = 0; track < kLast; ++track) {
    const Word* const begin = &gains[RankOf(track, 0)];
    most = Add(most, MostOf(track, gains));
    sum = std::accumulate(begin, begin + kPlaces, sum);
  }
  const auto mean = static_cast<Word>(sum >> 3);
  return Add(mean, Multiply(Subtract(most, mean), 16384));
}

struct Choice {
  std::size_t grid = 0;
  std::array<std::size_t, kTracks> places = {};
  Word square = 0;
  Word energy = kMostWord;
};

// Goes through the places. The energy of all four pulses, where those of a pair in common count
// twice, is 16 of a unit: at most 4 + 12 words, so that no sum here leaves its type.
class Search {
 public:
  Search(const Pulses& pulses, int tries) noexcept
      : pulses_(pulses),
        limit_(std::max(Limit(pulses.gains[0]), Limit(pulses.gains[1]))),
        triesLeft_(tries) {
    for (std::size_t grid = 0; grid < kGrids; ++grid) {
      mostThird_[grid] = MostOf(2, pulses.gains[grid]);
    }
    for (std::size_t i = 0; i < kPlaces; ++i) {
      for (std::size_t j = 0; j < kPlaces && triesLeft_ > 0; ++j) SearchAfter(i, j);
    }
  }

  int TriesLeft() const noexcept { return triesLeft_; }
  const Choice& Best() const noexcept { return best_; }

 private:
  using Energies = std::array<Long, kPlaces>;

  // The third track.
  void SearchAfter(std::size_t i, std::size_t j) noexcept {
    const std::size_t first = RankOf(0, i);
    const std::size_t second = RankOf(1, j);
    const ByRank& withFirst = pulses_.common[first];
    const ByRank& withSecond = pulses_.common[second];
    const int even = pulses_.gains[0][first] + pulses_.gains[0][second];
    const int odd = pulses_.gains[1][first] + pulses_.gains[1][second];
    if (even + mostThird_[0] <= limit_ && odd + mostThird_[1] <= limit_) return;

    const Long energy = pulses_.energies[first] + pulses_.energies[second] + 2 * withFirst[second];
    // What pulses on the later tracks add by themselves and by the first two.
    std::array<Long, 2 * kPlaces> added;
    for (std::size_t n = 0; n < added.size(); ++n) {
      const std::size_t rank = RankOf(2, 0) + n;
      added[n] = pulses_.energies[rank] + 2 * (withFirst[rank] + withSecond[rank]);
    }
    for (std::size_t k = 0; k < kPlaces && triesLeft_ > 0; ++k) {
      const std::size_t third = RankOf(2, k);
      const int withEven = even + pulses_.gains[0][third];
      const int withOdd = odd + pulses_.gains[1][third];
      const int gain = std::max(withEven, withOdd);
      if (gain <= limit_) continue;
      --triesLeft_;
      const std::size_t grid = withOdd > withEven ? 1 : 0;
      Energies energies;
      for (std::size_t n = 0; n < kPlaces; ++n) {
        energies[n] =
            energy + added[k] + added[kPlaces + n] + 2 * pulses_.common[third][RankOf(kLast, n)];
      }
      SearchLast({.grid = grid, .places = {i, j, k}}, gain, energies);
    }
  }

  // The last track. @param gain  of the pulses before. @param energies  with the last.
  void SearchLast(Choice choice, int gain, const Energies& energies) noexcept {
    const Word* const gains = &pulses_.gains[choice.grid][RankOf(kLast, 0)];
    std::array<Word, kPlaces> squares;
    std::array<Word, kPlaces> costs;
    for (std::size_t n = 0; n < kPlaces; ++n) {
      const int sum = std::min<int>(gain + gains[n], kMostWord);
      squares[n] = static_cast<Word>(sum * sum >> 15);
      costs[n] = static_cast<Word>(energies[n] >> 4);
    }
    for (std::size_t n = 0; n < kPlaces; ++n) {
      if (squares[n] * best_.energy <= best_.square * costs[n]) continue;
      choice.places[kLast] = n;
      choice.square = squares[n];
      choice.energy = costs[n];
      best_ = choice;
    }
  }

  const Pulses& pulses_;
  int limit_;
  std::array<Word, kGrids> mostThird_;
  int triesLeft_;
  Choice best_;
};

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
  const Subframe backward = FilterBackward(target, sharpened);
  const Signs signs = SignsOf(backward);
  Pulses pulses;
  SetGains(backward, signs, pulses);
  SetEnergies(Level(sharpened, EnergyOf(sharpened)), signs, pulses);
  const int tries = budget.ForSubframe();
  const Search search(pulses, tries);
  budget.Spend(tries - search.TriesLeft());
  const Choice& choice = search.Best();

  indices.grid = static_cast<unsigned>(choice.grid);
  indices.positions = 0;
  indices.signs = 0;
  indices.hasPulseTrain = false;
  Subframe filtered = {};
  for (std::size_t k = 0; k < kTracks; ++k) {
    const std::size_t position = PositionOf(k, choice.places[k], choice.grid);
    indices.positions |= static_cast<unsigned>(choice.places[k] << 3 * k);
    const bool isNegative = position < kSubframeSamples && signs[position / kGrids] < 0;
    if (!isNegative) indices.signs |= 1U << k;
    AddResponse(sharpened, position, isNegative, filtered);
  }
  indices.codeGain = GainFor(target, filtered);
}

}  // namespace Quorvex::g723_1
