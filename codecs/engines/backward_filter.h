// What the searches for pulses of ITU-T G.729 and G.723.1 have in common: a subframe's target,
// correlated with a response that begins at each of its samples, a response at a level that
// correlations of it can be made at, and the responses of all pulses together.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/sums_of_products.h"

namespace Quorvex::fixed_point {

/// Samples with zeros behind, so that from any on whole vectors can be read.
template <std::size_t kCount>
class Padded {
 public:
  explicit Padded(const std::array<Word, kCount>& samples) noexcept {
    std::ranges::copy(samples, samples_.begin());
  }

  const Word* From(std::size_t begin) const noexcept { return samples_.data() + begin; }
  /// Samples from there on, and some of the zeros.
  static constexpr std::size_t CountFrom(std::size_t begin) noexcept {
    return (kCount - begin + kVector - 1) / kVector * kVector;
  }

 private:
  static constexpr std::size_t kVector = 8;

  std::array<Word, kCount + kVector> samples_ = {};
};

/// Whether sums of products of two subframes' samples may saturate, in any order.
template <std::size_t kCount>
bool MaySaturate(const std::array<Word, kCount>& a, const std::array<Word, kCount>& b) noexcept {
  const std::int64_t weights = SumOfMagnitudes(b.data(), kCount);
  if (weights * Peak(a.data(), kCount) < kSumLimit) return false;
  // Schwarz's inequality, with what is twice the sums of the squares.
  constexpr std::int64_t kSquare = std::int64_t{4} * kSumLimit * kSumLimit;
  const std::int64_t energy = ExactEnergy(a.data(), kCount);
  return energy >= kSquare / (ExactEnergy(b.data(), kCount) + 1);
}

/// For each sample, what the target has in common with a response that begins there: chains of
/// MultiplyAdd.
template <std::size_t kCount>
std::array<Long, kCount> BackwardSums(const std::array<Word, kCount>& target,
                                      const std::array<Word, kCount>& response) noexcept {
  const Padded<kCount> targets(target);
  const Padded<kCount> responses(response);
  const bool saturates = MaySaturate(target, response);
  std::array<Long, kCount> sums;
  for (std::size_t i = 0; i < kCount; ++i) {
    const std::size_t count = targets.CountFrom(i);
    sums[i] = saturates ? Correlate(targets.From(i), responses.From(0), count)
                        : 2 * CorrelateUndoubled(targets.From(i), responses.From(0), count);
  }
  return sums;
}

/// The same, the greatest with 13 bits and the sign.
template <std::size_t kCount>
std::array<Word, kCount> FilterBackward(const std::array<Word, kCount>& target,
                                        const std::array<Word, kCount>& response) noexcept {
  const std::array<Long, kCount> sums = BackwardSums(target, response);
  Long peak = 0;
  for (const Long sum : sums) peak = std::max(peak, LongAbsolute(sum));
  const int shift = 18 - std::min(16, LongNorm(peak));
  std::array<Word, kCount> backward;
  std::ranges::transform(sums, backward.begin(), [shift](Long sum) { return Low(sum >> shift); });
  return backward;
}

/// The response at such a level that its energy has 31 bits at most.
/// @param energy  as a chain of MultiplyAdd.
template <std::size_t kCount>
std::array<Word, kCount> Level(const std::array<Word, kCount>& response, Long energy) noexcept {
  constexpr int kMostEnergy = 32000;
  const int shift = High(energy) > kMostEnergy ? -1 : LongNorm(energy) / 2;
  std::array<Word, kCount> level;
  std::ranges::transform(response, level.begin(),
                         [shift](Word sample) { return ShiftLeft(sample, shift); });
  return level;
}

/// Adds a pulse's response to what pulses make. @param position  of the pulse.
template <std::size_t kCount>
void AddResponse(const std::array<Word, kCount>& response, std::size_t position, bool isNegative,
                 std::array<Word, kCount>& filtered) noexcept {
  for (std::size_t i = position; i < kCount; ++i) {
    const Word sample = response[i - position];
    filtered[i] = isNegative ? Subtract(filtered[i], sample) : Add(filtered[i], sample);
  }
}

}  // namespace Quorvex::fixed_point
