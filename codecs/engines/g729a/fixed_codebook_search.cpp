// The subframe's 40 places make five tracks of eight: place p is the p / 5-th of track p mod 5. One
// pulse is on each of the tracks 0, 1 and 2, the fourth on track 3 or on track 4.
//
//   1. The target, filtered backwards, says for each place what a pulse there gains, and its sign.
//   2. The correlations of the response with itself say what two pulses cost together. With the
//      signs of their places put into them, the search need not know about signs.
//   3. Pairs of tracks are searched one after the other: first the best pair of one of the two best
//      places of a track and any of another, then the best pair of the two tracks that are left.
//      That is done in two orders for each of the last tracks.
//
// What is best has the greatest gain^2 / energy, and ratios are compared by cross products.
#include "codecs/engines/g729a/fixed_codebook_search.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "codecs/engines/g729a/correlation.h"

namespace Quorvex::g729a {

using namespace fixed_point;

namespace {

constexpr std::size_t kTracks = 5;
constexpr std::size_t kPlaces = kSubframeSamples / kTracks;
constexpr std::size_t kPulses = 4;

/// A place in the order of the tables below: track by track.
constexpr std::size_t RankOf(std::size_t position) noexcept {
  return position % kTracks * kPlaces + position / kTracks;
}
constexpr auto kRanks = [] {
  std::array<std::size_t, kSubframeSamples> ranks = {};
  for (std::size_t i = 0; i < ranks.size(); ++i) ranks[i] = RankOf(i);
  return ranks;
}();
constexpr std::size_t PositionOf(std::size_t rank) noexcept {
  return rank % kPlaces * kTracks + rank / kPlaces;
}

using ByRank = std::array<Word, kSubframeSamples>;

// What the search knows of each place, by rank.
struct Pulses {
  ByRank gains;  ///< at most 2^13
  std::array<bool, kSubframeSamples> negative;
  ByRank energies;                              ///< not below 0
  std::array<ByRank, kSubframeSamples> common;  ///< of two places, both ways, above -2^15
};

// The order in which tracks are searched: the first two from the best of the first, then the
// others.
struct Order {
  std::size_t start, partner, outer, inner;
};
constexpr std::array<Order, 4> kOrders = {{{2, 3, 0, 1}, {3, 0, 1, 2}, {2, 4, 0, 1}, {4, 0, 1, 2}}};

// gain^2 / energy of pulses.
struct Merit {
  Word square = -1;
  Word energy = 1;

  // The difference of two products of 2^30 at most keeps its sign.
  bool IsAbove(const Merit& other) const noexcept {
    return Long{other.energy} * square - Long{other.square} * energy > 0;
  }
};

struct Pair {
  Merit merit = {};
  std::size_t first = 0, second = 0;  ///< ranks
};

// The response at such a level that its energy has 31 bits at most.
Subframe Level(const Subframe& response) noexcept {
  constexpr int kMostEnergy = 32000;
  const Long energy = Correlate(response.data(), response.data()).value;
  const int shift = High(energy) > kMostEnergy ? -1 : LongNorm(energy) / 2;
  Subframe level;
  std::ranges::transform(response, level.begin(),
                         [shift](Word sample) { return ShiftLeft(sample, shift); });
  return level;
}

void SetGains(const Subframe& backward, Pulses& pulses) noexcept {
  for (std::size_t rank = 0; rank < kSubframeSamples; ++rank) {
    const Word gain = backward[PositionOf(rank)];
    pulses.gains[rank] = Absolute(gain);
    pulses.negative[rank] = gain < 0;
  }
}

// Puts the signs of a place and of all before into what they have in common. Two pulses of one
// sign lose one of rounding, since the sign is 32767.
void PutSigns(std::size_t position, const Subframe& negative, Subframe& common) noexcept {
  for (std::size_t i = 0; i < position; ++i) {
    const int value = common[i];
    const int same = value - (value > 0 ? 1 : 0);
    const int different = std::min<int>(-value, kMostWord);
    common[i] = static_cast<Word>(negative[i] == negative[position] ? same : different);
  }
}

// Two responses have the more in common the earlier they begin, at the same distance: a sum for
// each distance goes from the end to the beginning. `Step` adds a product to it.
template <class Step>
void SetEnergies(const Subframe& response, const Subframe& negative, const Step& step,
                 Pulses& pulses) noexcept {
  Subframe reversed;
  std::ranges::reverse_copy(response, reversed.begin());
  std::array<Long, kSubframeSamples> sums = {};  // the greatest distance first
  for (std::size_t k = 0; k < kSubframeSamples; ++k) {
    const std::size_t later = kSubframeSamples - 1 - k;
    Subframe common = {};
    for (std::size_t i = 0; i <= later; ++i) {
      sums[i + k] = step(sums[i + k], response[k], reversed[i]);
      common[i] = High(sums[i + k]);
    }
    pulses.energies[kRanks[later]] = common[later];
    PutSigns(later, negative, common);
    for (std::size_t i = 0; i < later; ++i) {
      pulses.common[kRanks[later]][kRanks[i]] = common[i];
      pulses.common[kRanks[i]][kRanks[later]] = common[i];
    }
  }
}

void SetEnergies(const Subframe& response, const Subframe& backward, Pulses& pulses) noexcept {
  Subframe negative;
  std::ranges::transform(backward, negative.begin(),
                         [](Word gain) { return static_cast<Word>(gain >> 15); });
  // No sum is greater than the energy.
  if (Correlate(response.data(), response.data()).saturated) {
    SetEnergies(response, negative, MultiplyAdd, pulses);
  } else {
    SetEnergies(
        response, negative, [](Long sum, Word a, Word b) { return sum + 2 * a * b; }, pulses);
  }
}

// Ranks of a track's two largest gains.
std::array<std::size_t, 2> BestOf(std::size_t track, const Pulses& pulses) noexcept {
  std::array<std::size_t, 2> best = {};
  std::size_t taken = kSubframeSamples;
  for (std::size_t& rank : best) {
    Word most = -1;
    for (std::size_t i = track * kPlaces; i < (track + 1) * kPlaces; ++i) {
      if (i != taken && pulses.gains[i] > most) {
        most = pulses.gains[i];
        rank = i;
      }
    }
    taken = rank;
  }
  return best;
}

constexpr Word Square(Word gain) noexcept { return Multiply(gain, gain); }

// The best pair of a start and a partner. Energies are a quarter of the pair's. No sum here or
// below saturates: it is 2^31 - 2^16 at most.
Pair SearchFirstPair(const Order& order, const Pulses& pulses) noexcept {
  Pair best{.first = order.start * kPlaces, .second = order.partner * kPlaces};
  for (const std::size_t start : BestOf(order.start, pulses)) {
    for (std::size_t i = order.partner * kPlaces; i < (order.partner + 1) * kPlaces; ++i) {
      const Long energy =
          0x4000 * (pulses.energies[start] + pulses.energies[i]) + 0x8000 * pulses.common[start][i];
      const Merit merit{Square(Add(pulses.gains[start], pulses.gains[i])), Round(energy)};
      if (merit.IsAbove(best.merit)) best = {merit, start, i};
    }
  }
  return best;
}

// What an inner pulse adds to the energy by itself and by the pair, an eighth.
std::array<Word, kPlaces> AddedEnergies(const Pair& pair, std::size_t track,
                                        const Pulses& pulses) noexcept {
  std::array<Word, kPlaces> added;
  for (std::size_t place = 0; place < kPlaces; ++place) {
    const std::size_t i = track * kPlaces + place;
    added[place] = Round(0x2000 * pulses.energies[i] +
                         0x4000 * (pulses.common[pair.first][i] + pulses.common[pair.second][i]));
  }
  return added;
}

// The best places of two more pulses. Energies are a sixteenth of those of all four.
Pair SearchSecondPair(const Pair& pair, const Order& order, const Pulses& pulses) noexcept {
  const Word gain = Add(pulses.gains[pair.first], pulses.gains[pair.second]);
  const auto added = AddedEnergies(pair, order.inner, pulses);
  Pair best{.first = order.outer * kPlaces, .second = order.inner * kPlaces};
  for (std::size_t i = order.outer * kPlaces; i < (order.outer + 1) * kPlaces; ++i) {
    const Word outerGain = Add(gain, pulses.gains[i]);
    const Long outer = 0x4000 * pair.merit.energy + 0x1000 * pulses.energies[i] +
                       0x2000 * (pulses.common[pair.first][i] + pulses.common[pair.second][i]);
    for (std::size_t place = 0; place < kPlaces; ++place) {
      const std::size_t j = order.inner * kPlaces + place;
      const Long energy = outer + 0x8000 * added[place] + 0x2000 * pulses.common[i][j];
      const Merit merit{Square(Add(outerGain, pulses.gains[j])), Round(energy)};
      if (merit.IsAbove(best.merit)) best = {merit, i, j};
    }
  }
  return best;
}

// Positions of the best four pulses, in the order of their tracks.
std::array<std::size_t, kPulses> Search(const Pulses& pulses) noexcept {
  Merit most;
  std::array<std::size_t, kPulses> ranks = {0, kPlaces, 2 * kPlaces, 3 * kPlaces};
  for (const Order& order : kOrders) {
    const Pair first = SearchFirstPair(order, pulses);
    const Pair second = SearchSecondPair(first, order, pulses);
    if (!second.merit.IsAbove(most)) continue;
    most = second.merit;
    ranks = {first.first, first.second, second.first, second.second};
    std::ranges::sort(ranks);
  }
  return ranks;
}

unsigned PositionsOf(const std::array<std::size_t, kPulses>& ranks) noexcept {
  std::size_t bits = 0;
  for (std::size_t k = 0; k < kPulses; ++k) bits |= ranks[k] % kPlaces << 3 * k;
  // The bit between the third and the fourth place chooses the last track.
  const std::size_t last = ranks[3] / kPlaces == kTracks - 1 ? 1 : 0;
  return static_cast<unsigned>((bits & 0x1FF) | last << 9 | (bits >> 9) << 10);
}

void AddResponse(const Subframe& response, std::size_t position, bool negative,
                 Subframe& filtered) noexcept {
  for (std::size_t i = position; i < kSubframeSamples; ++i) {
    const Word sample = response[i - position];
    filtered[i] = negative ? Subtract(filtered[i], sample) : Add(filtered[i], sample);
  }
}

}  // namespace

FixedCode SearchFixedCode(const Subframe& target, const Subframe& response) noexcept {
  Pulses pulses;
  const Subframe backward = FilterBackward(target, response);
  SetGains(backward, pulses);
  SetEnergies(Level(response), backward, pulses);
  const auto ranks = Search(pulses);

  FixedCode code{.positions = PositionsOf(ranks)};
  for (std::size_t k = 0; k < kPulses; ++k) {
    const bool negative = pulses.negative[ranks[k]];
    if (!negative) code.signs |= 1U << k;
    AddResponse(response, PositionOf(ranks[k]), negative, code.filtered);
  }
  return code;
}

}  // namespace Quorvex::g729a
