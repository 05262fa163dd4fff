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

#include "codecs/engines/backward_filter.h"
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
  ByRank gains;                                 ///< at most 2^13
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

void SetGains(const Subframe& backward, Pulses& pulses) noexcept {
  for (std::size_t rank = 0; rank < kSubframeSamples; ++rank) {
    pulses.gains[rank] = Absolute(backward[PositionOf(rank)]);
  }
}

// Puts the signs of a place and of all before into what they have in common: times 32767, which
// takes one from what is above 0, or times -32768. What saturated to -2^15 goes to the numbers
// beside the limits either way.
void PutSigns(std::size_t position, const Subframe& negative, Subframe& common) noexcept {
  const Word sign = negative[position];
  for (std::size_t i = 0; i < position; ++i) {
    const Word value = std::max<Word>(common[i], -kMostWord);
    const auto same = static_cast<Word>(value - (value > 0 ? 1 : 0));
    const auto different = static_cast<Word>(-value);
    common[i] = negative[i] == sign ? same : different;
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
  if (Correlator(response).With(response).saturated) {
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

// What the places of a track would make of pulses that are chosen already.
class Candidates {
 public:
  // @param gain  of the pulses before. @param energies  with the candidate, 2^16 of a unit.
  Candidates(int gain, const Word* gains, const std::array<Long, kPlaces>& energies) noexcept {
    for (std::size_t place = 0; place < kPlaces; ++place) {
      const int sum = std::min<int>(gain + gains[place], kMostWord);
      squares_[place] = static_cast<Word>(sum * sum >> 15);
      energies_[place] = static_cast<Word>((energies[place] + 0x8000) >> 16);
    }
  }

  // Puts a candidate at `second` where that is above the best.
  void Compete(std::size_t first, std::size_t track, Pair& best) const noexcept {
    for (std::size_t place = 0; place < kPlaces; ++place) {
      const Merit merit{squares_[place], energies_[place]};
      if (merit.IsAbove(best.merit)) best = {merit, first, track * kPlaces + place};
    }
  }

 private:
  std::array<Word, kPlaces> squares_;
  std::array<Word, kPlaces> energies_;
};

// The best pair of a start and a partner. Energies are a quarter of the pair's. No sum here or
// below saturates, rounding included: it is below 2^31 - 2^15.
Pair SearchFirstPair(const Order& order, const Pulses& pulses) noexcept {
  const std::size_t partners = order.partner * kPlaces;
  Pair best{.first = order.start * kPlaces, .second = partners};
  for (const std::size_t start : BestOf(order.start, pulses)) {
    std::array<Long, kPlaces> energies;
    for (std::size_t place = 0; place < kPlaces; ++place) {
      const std::size_t i = partners + place;
      energies[place] =
          0x4000 * (pulses.energies[start] + pulses.energies[i]) + 0x8000 * pulses.common[start][i];
    }
    const Candidates candidates(pulses.gains[start], &pulses.gains[partners], energies);
    candidates.Compete(start, order.partner, best);
  }
  return best;
}

// What a pulse has in common with both of a pair.
int CommonWith(const Pair& pair, std::size_t rank, const Pulses& pulses) noexcept {
  return pulses.common[pair.first][rank] + pulses.common[pair.second][rank];
}

// The best places of two more pulses. Energies are a sixteenth of those of all four.
Pair SearchSecondPair(const Pair& pair, const Order& order, const Pulses& pulses) noexcept {
  const int gain = pulses.gains[pair.first] + pulses.gains[pair.second];
  const std::size_t inner = order.inner * kPlaces;
  // What an inner pulse adds by itself and by the pair, an eighth.
  std::array<int, kPlaces> added;
  for (std::size_t place = 0; place < kPlaces; ++place) {
    const std::size_t j = inner + place;
    added[place] =
        (0x2000 * pulses.energies[j] + 0x4000 * CommonWith(pair, j, pulses) + 0x8000) >> 16;
  }

  Pair best{.first = order.outer * kPlaces, .second = inner};
  for (std::size_t i = order.outer * kPlaces; i < (order.outer + 1) * kPlaces; ++i) {
    const Long outer = 0x4000 * pair.merit.energy + 0x1000 * pulses.energies[i] +
                       0x2000 * CommonWith(pair, i, pulses);
    std::array<Long, kPlaces> energies;
    for (std::size_t place = 0; place < kPlaces; ++place) {
      energies[place] = outer + 0x8000 * added[place] + 0x2000 * pulses.common[i][inner + place];
    }
    const Candidates candidates(gain + pulses.gains[i], &pulses.gains[inner], energies);
    candidates.Compete(i, order.inner, best);
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

}  // namespace

FixedCode SearchFixedCode(const Subframe& target, const Subframe& response) noexcept {
  Pulses pulses;
  const Subframe backward = FilterBackward(target, response);
  SetGains(backward, pulses);
  const Long energy = Correlator(response).With(response).value;
  SetEnergies(Level(response, energy), backward, pulses);
  const auto ranks = Search(pulses);

  FixedCode code{.positions = PositionsOf(ranks)};
  for (std::size_t k = 0; k < kPulses; ++k) {
    const std::size_t position = PositionOf(ranks[k]);
    const bool isNegative = backward[position] < 0;
    if (!isNegative) code.signs |= 1U << k;
    AddResponse(response, position, isNegative, code.filtered);
  }
  return code;
}

}  // namespace Quorvex::g729a
