// The signal path:
//
//     speech ─ A(z/0.55) ─ pitch ─ tilt ─ 1/A(z/0.7) ─ level of the speech
#include "codecs/engines/g729a/post_filter.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "codecs/engines/g729a/filters.h"
#include "codecs/engines/g729a/functions.h"
#include "codecs/engines/sums_of_products.h"

namespace Quorvex::g729a {

using namespace fixed_point;

namespace {

constexpr Word kZeros = 18022;  // 0.55, Q15
constexpr Word kPoles = 22938;  // 0.7
// How much of the gain stays from sample to sample, and how much is taken of the one to come.
constexpr Word kKeptGain = 29491;  // 0.9
constexpr Word kNewGain = 3276;    // 0.1

/// What the samples of a lag before add to the samples themselves, both Q15.
struct PitchWeights {
  int lag = 0;
  Word own = kMostWord;
  Word delayed = 0;
};

// The weights of a lag with such a correlation and energies.
PitchWeights WeightsOf(int lag, Long correlation, Long delayed, Long own) noexcept {
  const int norm = LongNorm(std::max({correlation, delayed, own}));
  const auto normal = [norm](Long value) { return Round(LongShiftLeft(value, norm)); };
  const Word c = normal(correlation);
  const Word e = normal(delayed);
  // Less than 3 dB are gained.
  if (LongMultiply(c, c) < LongMultiply(e, normal(own)) >> 1) return {};
  if (c > e) return {lag, 21845, 10923};                 // 2/3 and 1/3
  const Word halfC = ShiftRight(Multiply(c, 16384), 1);  // weighs half
  const Word sum = Add(halfC, ShiftRight(e, 1));
  const Word gain = sum > 0 ? Divide(halfC, sum) : Word{0};
  return {lag, Subtract(kMostWord, gain), gain};
}

/// Samples at a quarter of their level, for correlations.
template <std::size_t kCount>
class QuietCopy {
 public:
  explicit QuietCopy(const Word* samples) noexcept {
    for (std::size_t i = 0; i < kCount; ++i) samples_[i] = static_cast<Word>(samples[i] >> 2);
    const Long peak = Peak(samples_, kCount);
    mayBeLoud_ = peak * peak >= kSumLimit / static_cast<Long>(kSubframeSamples);
  }

  /// Over a subframe, at two places.
  Long CorrelateAt(std::size_t a, std::size_t b, Long start = 0) const noexcept {
    if (mayBeLoud_) return Correlate(samples_ + a, samples_ + b, kSubframeSamples, start);
    return start + 2 * CorrelateUndoubled(samples_ + a, samples_ + b, kSubframeSamples);
  }

 private:
  Word samples_[kCount];
  bool mayBeLoud_;
};

Long EnergyOf(const Word* samples) noexcept {
  return QuietCopy<kSubframeSamples>(samples).CorrelateAt(0, 0);
}

// Looks for the pitch around the lag that was sent. @param residual  a subframe and its history.
PitchWeights FindPitch(const Word* residual, int lag) noexcept {
  const QuietCopy<kMostLag + kSubframeSamples> quiet(residual);
  const int last = std::min(lag + 3, kMostLag);
  const auto placeOf = [](int tried) { return static_cast<std::size_t>(kMostLag - tried); };
  int best = last - 6;
  Long most = kLeastLong;
  for (int tried = last - 6; tried <= last; ++tried) {
    const Long correlation = quiet.CorrelateAt(kMostLag, placeOf(tried));
    if (correlation <= most) continue;
    most = correlation;
    best = tried;
  }
  return WeightsOf(best, std::max<Long>(most, 0),
                   quiet.CorrelateAt(placeOf(best), placeOf(best), 1),
                   quiet.CorrelateAt(kMostLag, kMostLag, 1));
}

void AddPitch(const PitchWeights& pitch, const Word* residual, Word* voiced) noexcept {
  if (pitch.lag == 0) {
    std::copy_n(residual, kSubframeSamples, voiced);
    return;
  }
  const Word* const delayed = residual - pitch.lag;
  for (std::size_t n = 0; n < kSubframeSamples; ++n) {
    voiced[n] = Add(Multiply(pitch.own, residual[n]), Multiply(pitch.delayed, delayed[n]));
  }
}

// How much of each sample the next is expected to have, of the filter's response, Q15.
Word TiltOf(const Filter& zeros, const Filter& poles) noexcept {
  constexpr std::size_t kLength = 22;
  Word response[kOrder + kLength] = {};
  Word* const begin = response + kOrder;
  std::ranges::copy(zeros, begin);
  Synthesize(poles, begin, kLength, begin);
  const Word energy = High(Correlate(begin, begin, kLength));
  const Word next = High(Correlate(begin, begin + 1, kLength - 1));
  if (next <= 0) return 0;
  return Divide(Multiply(next, 26214), energy);  // 0.8
}

}  // namespace

void PostFilter::Filter(const g729a::Filter& filter, int lag, const Word* speech,
                        Word* filtered) noexcept {
  const g729a::Filter zeros = Expand(filter, kZeros);
  const g729a::Filter poles = Expand(filter, kPoles);
  Word* const residual = residual_.data() + kMostLag;
  Residual(zeros, speech, kSubframeSamples, residual);

  // The sample before, and a subframe.
  std::array<Word, 1 + kSubframeSamples> voiced;
  voiced[0] = last_;
  AddPitch(FindPitch(residual_.data(), lag), residual, voiced.data() + 1);
  last_ = voiced.back();
  const Word tilt = TiltOf(zeros, poles);
  for (std::size_t n = 0; n < kSubframeSamples; ++n) {
    filtered[n] = Subtract(voiced[n + 1], Multiply(tilt, voiced[n]));
  }
  std::shift_left(residual_.begin(), residual_.end(), kSubframeSamples);

  Word* const output = output_.data() + kOrder;
  Synthesize(poles, filtered, kSubframeSamples, output);
  std::copy_n(output, kSubframeSamples, filtered);
  std::shift_left(output_.begin(), output_.end(), kSubframeSamples);
  ControlLevel(speech, filtered);
}

void PostFilter::ControlLevel(const Word* speech, Word* filtered) noexcept {
  const Long output = EnergyOf(filtered);
  if (output == 0) {
    gain_ = 0;
    return;
  }
  Word target = 0;
  if (const Long input = EnergyOf(speech); input != 0) {
    const int outputNorm = LongNorm(output) - 1;
    const int inputNorm = LongNorm(input);
    const Word ratio =
        Divide(Round(LongShiftLeft(output, outputNorm)), Round(LongShiftLeft(input, inputNorm)));
    const Long root = InverseRoot(LongShiftRight(LongShiftLeft(ratio, 7), outputNorm - inputNorm));
    target = Multiply(Round(LongShiftLeft(root, 9)), kNewGain);
  }
  for (std::size_t n = 0; n < kSubframeSamples; ++n) {
    gain_ = Add(Multiply(gain_, kKeptGain), target);
    filtered[n] = High(LongShiftLeft(LongMultiply(filtered[n], gain_), 3));
  }
}

}  // namespace Quorvex::g729a
