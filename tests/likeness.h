// How much two stretches of audio are alike that no two programs decode in the same way.
#pragma once

#include <cmath>
#include <cstddef>
#include <span>

namespace tests {

/// The correlation of two signals whose second is delayed, from -1 to 1, over what they share; 0
/// when one is silent.
inline double Correlation(std::span<const short> first, std::span<const short> second,
                          std::size_t delay = 0) {
  double product = 0;
  double squares = 0;
  double otherSquares = 0;
  for (std::size_t i = 0; i < first.size() && i + delay < second.size(); ++i) {
    const double sample = first[i];
    const double other = second[i + delay];
    product += sample * other;
    squares += sample * sample;
    otherSquares += other * other;
  }
  return squares * otherSquares > 0 ? product / std::sqrt(squares * otherSquares) : 0;
}

/// The root of the mean square.
inline double Level(std::span<const short> samples) {
  double squares = 0;
  for (const double sample : samples) squares += sample * sample;
  return samples.empty() ? 0 : std::sqrt(squares / static_cast<double>(samples.size()));
}

}  // namespace tests
