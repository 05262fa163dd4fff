// Something to work on.
#pragma once

#include <cstddef>
#include <random>
#include <vector>

namespace benchmarks {

/// Uniform noise, the same every time.
/// @param level  of the loudest samples; full scale is 32767.
inline std::vector<short> Noise(std::size_t samples, int level) {
  std::minstd_rand random;
  std::uniform_int_distribution<int> value(-level, level);
  std::vector<short> noise(samples);
  for (short& sample : noise) sample = static_cast<short>(value(random));
  return noise;
}

}  // namespace benchmarks
