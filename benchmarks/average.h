// The plain loops that an application writes behind the peers.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <type_traits>

namespace benchmarks {

/// Averages one or two channels to mono 16-bit samples. One of 16 bits stays where it is.
/// @param samples  16-bit integers, or floating point between -1 and 1.
template <class Sample>
void AverageToMono(const Sample* samples, std::size_t frames, int channels, short* mono) {
  if constexpr (std::is_floating_point_v<Sample>) {
    const Sample scale = Sample{32768} / static_cast<Sample>(channels);
    const auto convert = [scale](Sample sum) {
      return static_cast<short>(std::clamp(sum * scale, Sample{-32768}, Sample{32767}));
    };
    if (channels == 2) {
      for (std::size_t f = 0; f < frames; ++f) {
        mono[f] = convert(samples[2 * f] + samples[2 * f + 1]);
      }
    } else {
      for (std::size_t f = 0; f < frames; ++f) mono[f] = convert(samples[f]);
    }
  } else if (channels == 2) {
    for (std::size_t f = 0; f < frames; ++f) {
      mono[f] = static_cast<short>((samples[2 * f] + samples[2 * f + 1]) / 2);
    }
  } else {
    benchmark::DoNotOptimize(samples);
  }
  benchmark::DoNotOptimize(mono);
  benchmark::ClobberMemory();
}

}  // namespace benchmarks
