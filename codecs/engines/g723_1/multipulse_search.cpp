// Six or five pulses of one size on the even or on the odd samples. Every way to choose
//
//   - no train or, where the lag is short, a train of each pulse, which is put into the response,
//   - the grid, and
//   - one of four sizes about that which the first pulse would have by itself
//
// places its pulses one after the other, each where most of the target is left. That which comes
// nearest to the target is taken.
#include "codecs/engines/g723_1/multipulse_search.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "codecs/engines/backward_filter.h"
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

struct Target {
  Subframe samples;
  std::int64_t energy;  ///< undoubled

  explicit Target(const Subframe& target) noexcept
      : samples(target), energy(ExactEnergy(target.data(), target.size()) / 2) {}
};

// For each place of a grid, and two more so that they fill whole vectors.
constexpr std::size_t kPaddedPlaces = kPlaces + 2;
using ByPlace = std::array<Long, kPaddedPlaces>;

// What is known of a response.
struct Response {
  Subframe samples;
  Long peak;  ///< no sample is larger
  /// Of two, by their distance on a grid: from kPlaces - 1 before to as many behind.
  std::array<Word, 2 * kPaddedPlaces> common;
  Long commonPeak;                    ///< none in common is larger
  std::array<ByPlace, kGrids> gains;  ///< what a pulse has of the target
};

constexpr std::size_t kNoDistance = kPlaces - 1;

// What two halved responses have in common, by their distance on a grid.
std::array<Long, kPlaces> Correlations(const Subframe& halved) noexcept {
  const Padded<kSubframeSamples> samples(halved);
  // No sum is greater than the energy.
  const bool saturates = ExactEnergy(halved.data(), halved.size()) > kMostLong;
  std::array<Long, kPlaces> sums;
  for (std::size_t i = 0; i < kPlaces; ++i) {
    const std::size_t distance = kGrids * i;
    const std::size_t count = samples.CountFrom(distance);
    sums[i] = saturates ? Correlate(samples.From(distance), samples.From(0), count)
                        : 2 * CorrelateUndoubled(samples.From(distance), samples.From(0), count);
  }
  return sums;
}

Response Analyze(const Subframe& target, const Subframe& response) noexcept {
  Response result = {.samples = response,
                     .peak = Peak(response.data(), response.size()),
                     .common = {},
                     .commonPeak = 0,
                     .gains = {}};
  Subframe halved;
  std::ranges::transform(response, halved.begin(),
                         [](Word sample) { return static_cast<Word>(sample >> 1); });
  const auto correlations = Correlations(halved);
  const int norm = LongNorm(correlations[0]);
  for (std::size_t i = 0; i < kPlaces; ++i) {
    const Word common = Round(LongShiftLeft(correlations[i], norm));
    result.common[kNoDistance + i] = common;
    result.common[kNoDistance - i] = common;
    result.commonPeak = std::max(result.commonPeak, std::abs(Long{common}));
  }
  const auto sums = BackwardSums(target, response);
  for (std::size_t i = 0; i < kSubframeSamples; ++i) {
    result.gains[i % kGrids][i / kGrids] = LongShiftLeft(sums[i], norm - 4);
  }
  return result;
}

// The place of the greatest gain, the last of equal ones.
std::size_t FirstPlace(const ByPlace& gains) noexcept {
  std::size_t best = 0;
  Long most = -1;
  for (std::size_t place = 0; place < kPlaces; ++place) {
    const Long size = LongAbsolute(gains[place]);
    if (size < most) continue;
    most = size;
    best = place;
  }
  return best;
}

// The gain with which one pulse would leave the least of a gain of this size. The two least gains
// and the greatest are not asked for, but tried beside.
unsigned GainOf(Long size, const Response& response) noexcept {
  const Word energy = response.common[kNoDistance];
  unsigned best = 22;
  Long least = kMostLong;
  for (unsigned i = best; i >= 2; --i) {
    const Long left = LongAbsolute(LongSubtract(LongMultiply(kCodeGains[i], energy), size));
    if (left >= least) continue;
    least = left;
    best = i;
  }
  return best;
}

constexpr auto kBits = [] {
  std::array<unsigned, kPaddedPlaces> bits = {};
  for (std::size_t i = 0; i < bits.size(); ++i) bits[i] = 1U << i;
  return bits;
}();

// Sums that cannot leave 32 bits, and sums that can.
struct PlainSums {
  static Long Add(Long a, Long b) noexcept { return a + b; }
  static Long Subtract(Long a, Long b) noexcept { return a - b; }
  static Long Absolute(Long a) noexcept { return a < 0 ? -a : a; }
};
struct SaturatingSums {
  static Long Add(Long a, Long b) noexcept { return LongAdd(a, b); }
  static Long Subtract(Long a, Long b) noexcept { return LongSubtract(a, b); }
  static Long Absolute(Long a) noexcept { return LongAbsolute(a); }
};

// What is left of the gains of a grid while pulses are placed.
template <class Sums>
class Remainder {
 public:
  // @param size  of the pulses.
  Remainder(const Response& response, unsigned grid, Word size) noexcept
      : left_(response.gains[grid]) {
    for (std::size_t i = 0; i < taken_.size(); ++i) taken_[i] = 2 * size * response.common[i];
    std::fill(isTaken_.begin() + kPlaces, isTaken_.end(), -1);
  }

  bool IsNegative(std::size_t place) const noexcept { return left_[place] < 0; }

  // Takes away what a pulse has. No other comes to its place.
  void Put(std::size_t place) noexcept {
    isTaken_[place] = -1;
    const Long* const taken = &taken_[kNoDistance - place];
    if (IsNegative(place)) {
      for (std::size_t i = 0; i < kPaddedPlaces; ++i) left_[i] = Sums::Add(left_[i], taken[i]);
    } else {
      for (std::size_t i = 0; i < kPaddedPlaces; ++i) left_[i] = Sums::Subtract(left_[i], taken[i]);
    }
  }

  // Where most is left, the first of equal places.
  std::size_t BestPlace() const noexcept {
    ByPlace sizes;
    Long most = -1;
    for (std::size_t i = 0; i < kPaddedPlaces; ++i) {
      sizes[i] = Sums::Absolute(left_[i]) | isTaken_[i];
      most = std::max(most, sizes[i]);
    }
    unsigned best = 0;
    for (std::size_t i = 0; i < kPaddedPlaces; ++i)
      best |= kBits[i] & (sizes[i] == most ? ~0U : 0U);
    return static_cast<std::size_t>(std::countr_zero(best));
  }

 private:
  ByPlace left_;
  ByPlace isTaken_ = {};  // -1: yes
  std::array<Long, 2 * kPaddedPlaces> taken_;
};

template <class Sums>
void Place(const Response& response, std::size_t first, Pulses& pulses) noexcept {
  Remainder<Sums> remainder(response, pulses.grid, kCodeGains[pulses.codeGain]);
  std::size_t place = first;
  for (std::size_t k = 0; k < pulses.count; ++k) {
    if (k > 0) {
      remainder.Put(place);
      place = remainder.BestPlace();
    }
    pulses.places[k] = place;
    pulses.areNegative[k] = remainder.IsNegative(place);
  }
}

// Places the pulses from the first one on, where the gain has this size.
void Place(const Response& response, std::size_t first, Long size, Pulses& pulses) noexcept {
  // No gain is greater than the first, and the last pulse need not be taken away.
  const std::int64_t taken = std::int64_t{2} * kCodeGains[pulses.codeGain] * response.commonPeak;
  const auto count = static_cast<std::int64_t>(pulses.count);
  if (size + (count - 1) * taken <= kMostLong) {
    Place<PlainSums>(response, first, pulses);
  } else {
    Place<SaturatingSums>(response, first, pulses);
  }
}

Subframe VectorOf(const Pulses& pulses) noexcept {
  Subframe vector = {};
  const Word size = kCodeGains[pulses.codeGain];
  for (std::size_t k = 0; k < pulses.count; ++k) {
    vector[PositionOf(pulses.grid, pulses.places[k])] = pulses.areNegative[k] ? Negate(size) : size;
  }
  return vector;
}

struct Filtered {
  Subframe samples;
  Long peak;  ///< no sample is larger
};

// The pulses through the response, each step saturating.
Filtered FilterSaturating(const Response& response, const Pulses& pulses) noexcept {
  const Subframe vector = VectorOf(pulses);
  Filtered filtered;
  for (std::size_t i = 0; i < kSubframeSamples; ++i) {
    Long sum = 0;
    for (std::size_t j = 0; j <= i; ++j) {
      sum = MultiplyAdd(sum, vector[j], response.samples[i - j]);
    }
    filtered.samples[i] = High(LongShiftLeft(sum, 2));
  }
  filtered.peak = Peak(filtered.samples.data(), filtered.samples.size());
  return filtered;
}

// The response in the size of the pulses, with either sign, and nothing before.
class SizedResponse {
 public:
  SizedResponse(const Response& response, Word size) noexcept {
    std::fill_n(positive_.begin(), kSubframeSamples, 0);
    std::fill_n(negative_.begin(), kSubframeSamples, 0);
    for (std::size_t i = 0; i < kSubframeSamples; ++i) {
      const Long sample = size * response.samples[i];
      positive_[kSubframeSamples + i] = sample;
      negative_[kSubframeSamples + i] = -sample;
    }
  }

  // A subframe in which it begins there.
  const Long* From(std::size_t position, bool isNegative) const noexcept {
    return (isNegative ? negative_ : positive_).data() + (kSubframeSamples - position);
  }

 private:
  using Samples = std::array<Long, 2 * kSubframeSamples>;
  Samples positive_;
  Samples negative_;
};

// The same where no sum saturates. What follows still can.
Filtered FilterPlain(const Response& response, const Pulses& pulses) noexcept {
  const SizedResponse sized(response, kCodeGains[pulses.codeGain]);
  std::array<const Long*, kMostPulses> parts;
  parts.fill(sized.From(kSubframeSamples, false));  // nothing
  for (std::size_t k = 0; k < pulses.count; ++k) {
    parts[k] = sized.From(PositionOf(pulses.grid, pulses.places[k]), pulses.areNegative[k]);
  }
  std::array<Long, kSubframeSamples> sums;
  Long bits = 0;
  for (std::size_t i = 0; i < kSubframeSamples; ++i) {
    Long sum = 0;
    for (const Long* const part : parts) sum += part[i];
    sums[i] = sum >> 13;
    bits |= sums[i] ^ (sums[i] >> 31);
  }
  Filtered filtered;
  filtered.peak = std::min(bits, Long{kMostWord}) + 1;
  if (bits <= kMostWord) {
    std::ranges::transform(sums, filtered.samples.begin(), Low);
  } else {
    std::ranges::transform(sums, filtered.samples.begin(), Saturate);
  }
  return filtered;
}

Filtered Filter(const Response& response, const Pulses& pulses) noexcept {
  const std::int64_t most = std::int64_t{kCodeGains[pulses.codeGain]} *
                            static_cast<std::int64_t>(pulses.count) * response.peak;
  return most < kSumLimit ? FilterPlain(response, pulses) : FilterSaturating(response, pulses);
}

Long MeritSaturating(const Subframe& target, const Subframe& filtered) noexcept {
  Long merit = 0;
  for (std::size_t i = 0; i < kSubframeSamples; ++i) {
    merit = MultiplyAdd(merit, target[i], filtered[i]);
    merit = LongSubtract(merit, LongMultiply(filtered[i], filtered[i]) >> 1);
  }
  return merit;
}

// By how much the filtered pulses take from the energy of the target: with the target x and the
// pulses y, the sum of 2xy - yy, which is that of xx - (x - y)(x - y). Hence no step passes
//   - the energy of the target and the greatest yy, which a step may add before it is taken away,
//   - below, the energy of what is left, x - y.
Long Merit(const Target& target, const Filtered& filtered) noexcept {
  // Of 60 squares the sum has 31 bits, and so has that of products by Schwarz's inequality.
  constexpr Long kMostPeak = 1 << 12;
  constexpr std::int64_t kMostEnergy = std::int64_t{1} << 30;
  const Word* const samples = filtered.samples.data();
  if (target.energy < kMostEnergy && filtered.peak <= kMostPeak) {
    const std::int64_t common =
        CorrelateUndoubled(target.samples.data(), samples, kSubframeSamples);
    const std::int64_t energy = CorrelateUndoubled(samples, samples, kSubframeSamples);
    const std::int64_t merit = 2 * common - energy;
    if (target.energy - merit <= kMostLong) return static_cast<Long>(merit);
  }
  return MeritSaturating(target.samples, filtered.samples);
}

void Try(std::size_t count, const Target& target, const Subframe& samples, bool hasPulseTrain,
         Choice& best) noexcept {
  const Response response = Analyze(target.samples, samples);
  for (unsigned grid = 0; grid < kGrids; ++grid) {
    const std::size_t first = FirstPlace(response.gains[grid]);
    const Long size = LongAbsolute(response.gains[grid][first]);
    const unsigned middle = GainOf(size, response);
    for (unsigned gain = middle - 2; gain <= middle + 1; ++gain) {
      Pulses pulses{.codeGain = gain, .grid = grid, .count = count};
      Place(response, first, size, pulses);
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
  const Target ownTarget(target);
  Choice best;
  Try(kPulses[subframe], ownTarget, response, false, best);
  if (halfLag < kShortLagEnd) {
    Subframe withTrain = response;
    AddPulseTrain(halfLag, withTrain);
    Try(kPulses[subframe], ownTarget, withTrain, true, best);
  }
  Write(subframe, best, indices);
}

}  // namespace Quorvex::g723_1
