// The samples are brought to 12 bits, windowed and correlated with themselves, and the correlations
// weighted, which widens the formants a little; Durbin's recursion makes the filter of them, one
// order after the other.
#include "codecs/engines/g723_1/linear_prediction.h"

#include <bit>

#include "codecs/engines/g723_1/arithmetic.h"
#include "codecs/engines/g723_1/linear_prediction_tables.h"
#include "codecs/engines/sums_of_products.h"

namespace Quorvex::g723_1 {

using namespace fixed_point;

namespace {

static_assert(kAnalysisWindow.size() == kWindowSamples);

// Zeros follow the samples, so that the loops over all lags have the same length, a multiple of 8.
constexpr std::size_t kProducts = 184;
static_assert(kProducts >= kWindowSamples);
using Windowed = std::array<Word, kProducts + kOrder>;

// Samples of 12 bits, behind the window, have an energy, and with it correlations, that leave room
// for what white noise is added in.
consteval bool EnergiesFit() {
  std::int64_t energy = 0;
  for (const Word weight : kAnalysisWindow) {
    const std::int64_t most = (4096 * weight + 0x4000) >> 15;
    energy += most * most;
  }
  return energy + (energy >> 10) <= kMostLong;
}
static_assert(EnergiesFit());

// @return by how many bits to the left the samples are shifted.
int Window(const Word* samples, Windowed& windowed) noexcept {
  const int shift = NormalizedCopy(samples, kWindowSamples, windowed.data());
  for (std::size_t n = 0; n < kWindowSamples; ++n) {
    windowed[n] = MultiplyRoundedNarrow(windowed[n], kAnalysisWindow[n]);
  }
  return shift;
}

}  // namespace

Autocorrelation Correlate(const Word* samples) noexcept {
  Windowed windowed{};
  const int samplesShift = Window(samples, windowed);
  Long energy = CorrelateUndoubled(windowed.data(), windowed.data(), kProducts);
  energy += energy >> 10;
  if (energy == 0) return {};

  Autocorrelation result;
  const int norm = LongNorm(energy);
  result.values[0] = Round(energy * (1 << norm));
  for (std::size_t lag = 1; lag <= kOrder; ++lag) {
    const Word* const later = windowed.data() + lag;
    // No correlation is larger than the energy.
    const Long sum = CorrelateUndoubled(windowed.data(), later, kProducts) * (1 << norm);
    result.values[lag] = Round(MultiplyLong(sum, kLagWindow[lag - 1]));
  }
  result.shift = norm + 2 * samplesShift;
  return result;
}

Prediction Predict(const Autocorrelation& autocorrelation) noexcept {
  constexpr Word kSineReflection = 31130;  // 0.95
  const auto& values = autocorrelation.values;
  Prediction result;
  result.error = values[0];
  Filter& filter = result.filter;
  for (std::size_t order = 1; order <= kOrder; ++order) {
    Long rest = Deposit(values[order]) >> 2;
    for (std::size_t j = 1; j < order; ++j) {
      rest = MultiplySubtract(rest, filter[j - 1], values[order - j]);
    }
    rest = LongShiftLeft(rest, 2);
    const Long size = LongAbsolute(rest);
    if (size >= Deposit(result.error)) {
      result.isSine = true;
      return result;
    }
    const Word quotient = Quotient(size, result.error);
    const Word reflection = rest < 0 ? quotient : Negate(quotient);
    if (order == 2 && reflection > kSineReflection) result.isSine = true;
    const Long lost = MultiplyLong(rest, reflection);
    result.error = Round(LongAdd(lost, Deposit(result.error)));

    const Filter before = filter;
    for (std::size_t j = 1; j < order; ++j) {
      filter[j - 1] = Round(MultiplyAdd(Deposit(before[j - 1]), reflection, before[order - j - 1]));
    }
    filter[order - 1] = Round(Deposit(Negate(reflection)) >> 2);
  }
  return result;
}

void SineDetector::Add(const Prediction& prediction) noexcept {
  windows_ = windows_ << 1 | (prediction.isSine ? 1 : 0);
}

bool SineDetector::IsSine() const noexcept { return std::popcount(windows_ & 0x7FFF) >= 14; }

}  // namespace Quorvex::g723_1
