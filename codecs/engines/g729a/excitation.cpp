#include "codecs/engines/g729a/excitation.h"

#include <algorithm>
#include <cstddef>

#include "codecs/engines/g729a/pitch_tables.h"

namespace Quorvex::g729a {

using namespace fixed_point;

void RepeatExcitation(Lag lag, Word* excitation) noexcept {
  constexpr int kTaps = 10;  // each way
  // The filter lies at thirds after a sample.
  int thirds = -lag.thirds;
  const Word* source = excitation - lag.samples;
  if (thirds < 0) {
    thirds += 3;
    --source;
  }
  const Word* const before = &kInterpolation[static_cast<std::size_t>(thirds)];
  const Word* const after = &kInterpolation[static_cast<std::size_t>(3 - thirds)];
  for (std::size_t n = 0; n < kSubframeSamples; ++n, ++source) {
    Long sum = 0;
    for (int i = 0; i < kTaps; ++i) {
      sum = MultiplyAdd(sum, source[-i], before[3 * i]);
      sum = MultiplyAdd(sum, source[1 + i], after[3 * i]);
    }
    excitation[n] = Round(sum);
  }
}

Subframe PulsesOf(unsigned positions, unsigned signs) noexcept {
  Subframe code{};
  const auto place = [&](unsigned pulse, unsigned track) {
    const std::size_t position = 5 * (positions & 7) + track;
    code[position] = (signs >> pulse & 1) != 0 ? 8191 : -8192;
    positions >>= 3;
  };
  place(0, 0);
  place(1, 1);
  place(2, 2);
  const unsigned last = 3 + (positions & 1);
  positions >>= 1;
  place(3, last);
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

void AddCode(Word pitchGain, Word codeGain, const Subframe& code, Word* excitation) noexcept {
  for (std::size_t n = 0; n < kSubframeSamples; ++n) {
    const Long sum = MultiplyAdd(LongMultiply(excitation[n], pitchGain), code[n], codeGain);
    excitation[n] = Round(LongShiftLeft(sum, 1));
  }
}

}  // namespace Quorvex::g729a
