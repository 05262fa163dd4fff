// A row's score is the sum of its factors times the products, in the order in which they stand
// there, saturating at every step.
#include "codecs/engines/g723_1/pitch_gain_search.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "codecs/engines/sums_of_products.h"

namespace Quorvex::g723_1 {

using namespace fixed_point;

namespace {

Long ScoreSaturating(const PitchProducts& products, const PitchGainRow& row) noexcept {
  Long score = 0;
  for (std::size_t i = 0; i < kPitchProducts; ++i) {
    score = LongAdd(score, LongMultiply(products[i], row[i]) >> 1);
  }
  return score;
}

// The parts of a row, each of which has products of another size.
struct Part {
  std::size_t first;
  std::size_t end;
};
constexpr std::array<Part, 3> kParts = {
    {{0, kPitchTaps}, {kPitchTaps, 2 * kPitchTaps}, {2 * kPitchTaps, kPitchProducts}}};

constexpr Long MagnitudesOf(const PitchGainRow& row, const Part& part) noexcept {
  return SumOfMagnitudes(row.data() + part.first, part.end - part.first);
}
consteval Long MostMagnitudes(const Part& part) {
  Long most = 0;
  for (const PitchGainRow& row : kShortLagGains) most = std::max(most, MagnitudesOf(row, part));
  for (const PitchGainRow& row : kPitchGains) most = std::max(most, MagnitudesOf(row, part));
  return most;
}
constexpr std::array<Long, 3> kMostMagnitudes = {
    MostMagnitudes(kParts[0]), MostMagnitudes(kParts[1]), MostMagnitudes(kParts[2])};

// Whether the score of some row may.
bool MaySaturate(const PitchProducts& products) noexcept {
  std::int64_t most = 0;
  for (std::size_t i = 0; i < kParts.size(); ++i) {
    Long peak = 0;
    for (std::size_t j = kParts[i].first; j < kParts[i].end; ++j) {
      peak = std::max(peak, std::abs(Long{products[j]}));
    }
    most += std::int64_t{peak} * kMostMagnitudes[i];
  }
  return most > kMostLong;
}

// The few rows of which that can be true: 2^15 times their magnitudes is more than a score takes.
template <std::size_t kRows>
consteval std::array<bool, kRows> LoudRows(const std::array<PitchGainRow, kRows>& rows) {
  std::array<bool, kRows> areLoud = {};
  for (std::size_t i = 0; i < kRows; ++i) {
    areLoud[i] = MagnitudesOf(rows[i], {0, kPitchProducts}) >= 1 << 16;
  }
  return areLoud;
}
constexpr auto kLoudShortLagRows = LoudRows(kShortLagGains);
constexpr auto kLoudRows = LoudRows(kPitchGains);

}  // namespace

void SearchPitchGains(int lag, bool hasShortLagGains, unsigned rowCount,
                      const PitchProducts& products, PitchChoice& best) noexcept {
  const PitchGainRow* const rows = hasShortLagGains ? kShortLagGains.data() : kPitchGains.data();
  const bool* const areLoud = hasShortLagGains ? kLoudShortLagRows.data() : kLoudRows.data();
  const bool maySaturate = MaySaturate(products);
  for (unsigned row = 0; row < rowCount; ++row) {
    const Long score = maySaturate && areLoud[row]
                           ? ScoreSaturating(products, rows[row])
                           : CorrelateUndoubled(products.data(), rows[row].data(), kPitchProducts);
    if (score > best.score) best = {lag, row, score};
  }
}

}  // namespace Quorvex::g723_1
