#include "codecs/engines/g729a/excitation.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <iterator>

#include "codecs/engines/block_filter.h"
#include "codecs/engines/g729a/pitch_tables.h"
#include "codecs/engines/sums_of_products.h"

namespace Quorvex::g729a {

using namespace fixed_point;

namespace {

constexpr std::size_t kTaps = 10;  // each way
// The end of the filter stays before the block that it makes, also for the shortest lag that a
// frame may send, which is one less.
static_assert(kFilterBlock + kTaps <= static_cast<std::size_t>(kLeastLag) - 1);

// The interpolation at thirds after a sample: from the coefficient of the sample ten later to that
// of the sample nine earlier.
using Taps = std::array<Word, 2 * kTaps>;
constexpr std::array<Taps, 3> kPlaces = [] {
  std::array<Taps, 3> places{};
  for (std::size_t thirds = 0; thirds < places.size(); ++thirds) {
    for (std::size_t i = 0; i < kTaps; ++i) {
      places[thirds][kTaps - 1 - i] = kInterpolation[3 - thirds + 3 * i];
      places[thirds][kTaps + i] = kInterpolation[thirds + 3 * i];
    }
  }
  return places;
}();

// Samples below this add up without saturating, whatever their signs and the place.
constexpr Long kLoud = [] {
  Long most = 0;
  for (const Taps& taps : kPlaces) most = std::max(most, SumOfMagnitudes(taps.data(), taps.size()));
  return kSumLimit / most;
}();

// From the middle of the filter outwards.
Word InterpolateSaturating(const Taps& taps, const Word* newest) noexcept {
  Long sum = 0;
  for (std::size_t i = 0; i < kTaps; ++i) {
    for (const std::size_t tap : {kTaps + i, kTaps - 1 - i}) {
      sum = MultiplyAdd(sum, *(newest - tap), taps[tap]);
    }
  }
  return Round(sum);
}

}  // namespace

void RepeatExcitation(Lag lag, Word* excitation) noexcept {
  // A third before a sample is two thirds after the one before.
  const bool isBefore = lag.thirds > 0;
  const Taps& taps = kPlaces[static_cast<std::size_t>(isBefore ? 3 - lag.thirds : -lag.thirds)];
  const Word* newest = excitation - lag.samples - (isBefore ? 1 : 0) + kTaps;
  for (std::size_t n = 0; n < kSubframeSamples; n += kFilterBlock, newest += kFilterBlock) {
    const Word* const oldest = newest - (taps.size() - 1);
    if (Peak(oldest, taps.size() + kFilterBlock - 1) < kLoud) {
      FilterBlocks(newest, taps.data(), taps.size(), 15, kFilterBlock, excitation + n);
    } else {
      for (std::size_t i = 0; i < kFilterBlock; ++i) {
        excitation[n + i] = InterpolateSaturating(taps, newest + i);
      }
    }
  }
}

Subframe PulsesOf(unsigned positions, unsigned signs) noexcept {
  // A bit chooses the last track.
  const unsigned tracks[] = {0, 1, 2, 3 + (positions >> 9 & 1)};
  const unsigned places[] = {positions, positions >> 3, positions >> 6, positions >> 10};
  Subframe code{};
  for (std::size_t k = 0; k < std::size(tracks); ++k) {
    code[5 * (places[k] & 7) + tracks[k]] = (signs >> k & 1) != 0 ? 8191 : -8192;
  }
  return code;
}

Word SharpeningOf(Word pitchGain) noexcept {
  constexpr Word kMost = 13017;  // 0.8
  return std::clamp(pitchGain, kLeastSharpening, kMost);
}

void Sharpen(int lag, Word sharpening, Word* samples) noexcept {
  const Word gain = ShiftLeft(sharpening, 1);
  for (auto n = static_cast<std::size_t>(lag); n < kSubframeSamples; ++n) {
    samples[n] = Add(samples[n], Multiply(samples[n - static_cast<std::size_t>(lag)], gain));
  }
}

namespace {

void AddCodeSaturating(Word pitchGain, Word codeGain, const Subframe& code,
                       Word* excitation) noexcept {
  for (std::size_t n = 0; n < kSubframeSamples; ++n) {
    const Long sum = MultiplyAdd(LongMultiply(excitation[n], pitchGain), code[n], codeGain);
    excitation[n] = Round(LongShiftLeft(sum, 1));
  }
}

}  // namespace

void AddCode(Word pitchGain, Word codeGain, const Subframe& code, Word* excitation) noexcept {
  const Long most = Peak(excitation, kSubframeSamples) * std::abs(Long{pitchGain}) / 2 +
                    Peak(code.data(), kSubframeSamples) * std::abs(Long{codeGain}) / 2;
  if (most >= kSumLimit / 2) {
    AddCodeSaturating(pitchGain, codeGain, code, excitation);
    return;
  }
  for (std::size_t n = 0; n < kSubframeSamples; ++n) {
    const Long sum = excitation[n] * pitchGain + code[n] * codeGain;
    excitation[n] = Saturate((sum + 0x2000) >> 14);
  }
}

}  // namespace Quorvex::g729a
