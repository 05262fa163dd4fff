// The reduced ratio of two sampling frequencies, and the places of output samples in an input that
// is resampled by it: integers, so that nothing drifts however long a stream is.
#pragma once

#include <cmath>
#include <cstdint>
#include <numeric>

namespace Quorvex {

/// A place between two input samples: `sample` + `phase` / L.
struct InputPosition {
  std::int64_t sample = 0;
  std::int64_t phase = 0;  ///< 0 to L - 1
};

/// An output sample comes every M / L input samples. Positions and lengths must be below 2^31, and
/// positions that become times and positions again below 2^20.
class FrequencyRatio {
 public:
  FrequencyRatio() = default;

  /// @param input, output  in Hz, at least 1.
  FrequencyRatio(int input, int output) {
    const int divisor = std::gcd(input, output);
    l_ = output / divisor;
    m_ = input / divisor;
  }

  std::int64_t L() const { return l_; }
  std::int64_t M() const { return m_; }

  /// The position at a time in input samples: the very one that TimeAt had, since a phase is not
  /// finer than 2^-31.
  InputPosition PositionAt(double time) const {
    const double whole = std::floor(time);
    const auto sample = static_cast<std::int64_t>(whole);
    return Normalised(sample, std::llround((time - whole) * static_cast<double>(l_)));
  }

  double TimeAt(InputPosition position) const {
    return static_cast<double>(position.sample) +
           static_cast<double>(position.phase) / static_cast<double>(l_);
  }

  /// How many output samples lie at or after a position and before the input sample `end`.
  std::int64_t CountBefore(InputPosition position, std::int64_t end) const {
    const std::int64_t distance = (end - position.sample) * l_ - position.phase;  // in 1/L
    return distance > 0 ? (distance + m_ - 1) / m_ : 0;
  }

  /// The position `count` output samples later.
  InputPosition Advanced(InputPosition position, std::int64_t count) const {
    return Normalised(position.sample, position.phase + count * m_);
  }

 private:
  InputPosition Normalised(std::int64_t sample, std::int64_t phase) const {
    return {sample + phase / l_, phase % l_};
  }

  std::int64_t l_ = 1;
  std::int64_t m_ = 1;
};

}  // namespace Quorvex
