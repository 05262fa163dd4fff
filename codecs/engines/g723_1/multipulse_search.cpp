// Six or five pulses of one size on the even or on the odd samples. Every way to choose
//
//   - no train or, where the lag is short, a train of each pulse, which is put into the response,
//   - the grid, and
//   - one of four sizes about that which the first pulse would have by itself
//
// places its pulses one after the other, each where most of the target is left. That which comes
// nearest to the target is taken.
#include "codecs/engines/g723_1/multipulse_search.h"

#include <array>
#include <cstddef>
#include <cstdint>

#include "codecs/engines/g723_1/excitation.h"
#include "codecs/engines/g723_1/fixed_codebook_tables.h"
#include "codecs/engines/sums_of_products.h"

namespace Quorvex::g723_1 {

using namespace fixed_point;

namespace {

constexpr std::size_t kGrids = 2;
constexpr std::size_t kPlaces = kSubframeSamples / kGrids;
constexpr std::size_t kMostPulses = 6;

constexpr std::size_t PositionOf(std::size_t grid, std::size_t place) noexcept {
  return kGrids * place + grid;
}

// Pulses of one size on one grid.
struct Pulses {
  unsigned codeGain = 0;
  unsigned grid = 0;
  std::size_t count = 0;
  std::array<std::size_t, kMostPulses> places = {};
  std::array<bool, kMostPulses> areNegative = {};
};

struct Choice {
  Long merit = kLeastLong;
  bool hasPulseTrain = false;
  Pulses pulses;
};

// What is known of a response.
struct Response {
  Subframe samples;
  std::array<Word, kPlaces> common;               ///< of two, by their distance on a grid
  std::array<Long, kSubframeSamples> gains = {};  ///< what a pulse at each sample has of the target

  Response(const Subframe& target, const Subframe& response) noexcept;
};

Response::Response(const Subframe& target, const Subframe& response) noexcept : samples(response) {
  Subframe halved;
  for (std::size_t i = 0; i < halved.size(); ++i) halved[i] = ShiftRight(response[i], 1);
  const int norm = LongNorm(Correlate(halved.data(), halved.data(), halved.size()));
  for (std::size_t i = 0; i < kPlaces; ++i) {
    const std::size_t distance = kGrids * i;
    const Long sum = Correlate(&halved[distance], halved.data(), halved.size() - distance);
    common[i] = Round(LongShiftLeft(sum, norm));
  }
  for (std::size_t i = 0; i < kSubframeSamples; ++i) {
    const Long sum = Correlate(&target[i], response.data(), kSubframeSamples - i);
    gains[i] = LongShiftLeft(sum, norm - 4);
  }
}

// The place of the greatest gain, the last of equal ones.
std::size_t FirstPlace(const Response& response, std::size_t grid) noexcept {
  std::size_t best = 0;
  Long most = -1;
  for (std::size_t place = 0; place < kPlaces; ++place) {
    const Long size = LongAbsolute(response.gains[PositionOf(grid, place)]);
    if (size < most) continue;
    most = size;
    best = place;
  }
  return best;
}

// The gain with which one pulse would leave the least of a gain of this size. The two least gains
// and the greatest are not asked for, but tried beside.
unsigned GainOf(Long size, const Response& response) noexcept {
  unsigned best = 0;
  Long least = kMostLong;
  for (unsigned i = 22; i >= 2; --i) {
    const Long left =
        LongAbsolute(LongSubtract(LongMultiply(kCodeGains[i], response.common[0]), size));
    if (left >= least) continue;
    least = left;
    best = i;
  }
  return best;
}

// Places the pulses from the first one on.
void Place(const Response& response, std::size_t first, Pulses& pulses) noexcept {
  std::array<Long, kPlaces> left;
  std::array<bool, kPlaces> isTaken = {};
  for (std::size_t i = 0; i < kPlaces; ++i) left[i] = response.gains[PositionOf(pulses.grid, i)];
  std::size_t place = first;
  for (std::size_t k = 0; k < pulses.count; ++k) {
    if (k > 0) {
      Long most = -1;
      for (std::size_t i = 0; i < kPlaces; ++i) {
        if (isTaken[i] || LongAbsolute(left[i]) <= most) continue;
        most = LongAbsolute(left[i]);
        place = i;
      }
    }
    isTaken[place] = true;
    pulses.places[k] = place;
    pulses.areNegative[k] = left[place] < 0;
    const Word size = kCodeGains[pulses.codeGain];
    const Word amplitude = pulses.areNegative[k] ? Negate(size) : size;
    for (std::size_t i = 0; i < kPlaces; ++i) {
      const std::size_t distance = i < place ? place - i : i - place;
      left[i] = MultiplySubtract(left[i], amplitude, response.common[distance]);
    }
  }
}

// The pulses through the response.
Subframe Filter(const Response& response, const Pulses& pulses) noexcept {
  Subframe vector = {};
  for (std::size_t k = 0; k < pulses.count; ++k) {
    const Word size = kCodeGains[pulses.codeGain];
    vector[PositionOf(pulses.grid, pulses.places[k])] = pulses.areNegative[k] ? Negate(size) : size;
  }
  Subframe filtered;
  for (std::size_t i = 0; i < kSubframeSamples; ++i) {
    Long sum = 0;
    for (std::size_t j = 0; j <= i; ++j) {
      sum = MultiplyAdd(sum, vector[j], response.samples[i - j]);
    }
    filtered[i] = High(LongShiftLeft(sum, 2));
  }
  return filtered;
}

// By how much the filtered pulses take from the energy of the target.
Long Merit(const Subframe& target, const Subframe& filtered) noexcept {
  Long merit = 0;
  for (std::size_t i = 0; i < kSubframeSamples; ++i) {
    merit = MultiplyAdd(merit, target[i], filtered[i]);
    merit = LongSubtract(merit, LongMultiply(filtered[i], filtered[i]) >> 1);
  }
  return merit;
}

void Try(std::size_t count, const Subframe& target, const Subframe& samples, bool hasPulseTrain,
         Choice& best) noexcept {
  const Response response(target, samples);
  for (unsigned grid = 0; grid < kGrids; ++grid) {
    const std::size_t first = FirstPlace(response, grid);
    const Long size = LongAbsolute(response.gains[PositionOf(grid, first)]);
    const unsigned middle = GainOf(size, response);
    for (unsigned gain = middle - 2; gain <= middle + 1; ++gain) {
      Pulses pulses{.codeGain = gain, .grid = grid, .count = count};
      Place(response, first, pulses);
      const Long merit = Merit(target, Filter(response, pulses));
      if (merit > best.merit) best = {merit, hasPulseTrain, pulses};
    }
  }
}

void Write(std::size_t subframe, const Choice& choice, SubframeIndices& indices) noexcept {
  const Pulses& pulses = choice.pulses;
  std::array<bool, kPlaces> isPulse = {};
  std::array<bool, kPlaces> isNegative = {};
  for (std::size_t k = 0; k < pulses.count; ++k) {
    isPulse[pulses.places[k]] = true;
    isNegative[pulses.places[k]] = pulses.areNegative[k];
  }
  indices.signs = 0;
  for (std::size_t i = 0; i < kPlaces; ++i) {
    if (isPulse[i]) indices.signs = indices.signs << 1 | (isNegative[i] ? 1U : 0U);
  }
  indices.positions = PlacementOf(subframe, isPulse);
  indices.codeGain = pulses.codeGain;
  indices.grid = pulses.grid;
  indices.hasPulseTrain = choice.hasPulseTrain;
}

}  // namespace

void SearchMultipulse(std::size_t subframe, int halfLag, const Subframe& target,
                      const Subframe& response, SubframeIndices& indices) noexcept {
  Choice best;
  Try(kPulses[subframe], target, response, false, best);
  if (halfLag < kShortLagEnd) {
    Subframe withTrain = response;
    AddPulseTrain(halfLag, withTrain);
    Try(kPulses[subframe], target, withTrain, true, best);
  }
  Write(subframe, best, indices);
}

}  // namespace Quorvex::g723_1
