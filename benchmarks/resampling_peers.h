// The peers of the resampling accessor, each set up as an application with 16-bit audio would.
#pragma once

#include <cstddef>
#include <functional>
#include <span>

namespace benchmarks {

struct Conversion {
  unsigned input;   ///< Hz
  unsigned output;  ///< Hz
  unsigned channels;

  /// Room for what `frames` of input give, and for what a peer may have held back before.
  std::size_t OutputRoom(std::size_t frames) const {
    return frames * output / input + kHeldBack * (1 + output / input);
  }

 private:
  static constexpr std::size_t kHeldBack = 65536;
};

/// Takes a block of interleaved samples. Empty input is the end of the stream, where the peer has
/// one. @return how many frames are in `output`; 0 is also failure.
using Converter = std::function<std::size_t(std::span<const short> input, std::span<short> output)>;

/// @param recipe  SOXR_MQ or another; without dither, by one thread.
Converter MakeSoxr(const Conversion& conversion, unsigned long recipe);
/// Sets one up and ends it. @return whether that worked.
bool SetUpSoxr(const Conversion& conversion, unsigned long recipe);

/// Quality 5, the lowest whose stop band is below -92 dB (a Kaiser window of about 100 dB, 80
/// taps).
Converter MakeSpeex(const Conversion& conversion);
/// 32 taps on either side, as ours; samples are converted to floating point and back.
Converter MakeZita(const Conversion& conversion);
/// The medium sinc converter; samples are converted by its own functions.
Converter MakeSamplerate(const Conversion& conversion);
/// As it is without options.
Converter MakeSwresample(const Conversion& conversion);

}  // namespace benchmarks
