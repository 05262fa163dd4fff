// The resampling filter by its definition, in double precision and with little regard to speed:
// what the library's output is held against. It shares no code with the library.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <numeric>
#include <span>
#include <vector>

namespace tests {

/// With d the distance of an input sample from an output sample, in input samples:
///
///     h(d) = c sinc(c d) I0(9 sqrt(1 - (d/H)^2)) / I0(9)      for |d| < H, else 0
///     c = 0.95 min(1, output/input)        H = trunc(32 max(1, input/output))
///
/// at a gain of 0.98.
class IdealResampling {
 public:
  /// @param input, output  in Hz.
  IdealResampling(int input, int output)
      : l_(output / std::gcd(input, output)),
        m_(input / std::gcd(input, output)),
        half_(32 * std::max(l_, m_) / l_),
        responses_(static_cast<std::size_t>(l_)) {}

  /// The output of a stream of one channel from its sample `first` on to the end, neither rounded
  /// nor clipped: of all, ceil(input samples x output/input). Silence is before and after.
  std::vector<double> Of(std::span<const short> input, std::size_t first = 0) {
    const auto end = static_cast<std::int64_t>(input.size());
    std::vector<double> output;
    for (auto time = static_cast<std::int64_t>(first) * m_; time < end * l_; time += m_) {
      const double* const response = Response(time % l_).data();
      const std::int64_t begin = time / l_ - half_ + 1;
      const std::int64_t from = std::max<std::int64_t>(0, begin);
      const std::int64_t to = std::min(end, begin + 2 * half_);
      output.push_back(std::inner_product(input.data() + from, input.data() + to,
                                          response + (from - begin), 0.0));
    }
    return output;
  }

  /// L: how many places between two input samples output samples have.
  std::int64_t Phases() const { return l_; }

 private:
  // For the 2 H input samples around a time that is phase / L after one of them.
  const std::vector<double>& Response(std::int64_t phase) {
    std::vector<double>& response = responses_[static_cast<std::size_t>(phase)];
    if (!response.empty()) return response;
    const auto l = static_cast<double>(l_);
    const double cutOff = 0.95 * std::min(1.0, l / static_cast<double>(m_));
    for (std::int64_t i = 1 - half_; i <= half_; ++i) {
      const double distance = static_cast<double>(phase - i * l_) / l;
      const double relative = distance / static_cast<double>(half_);
      const double angle = std::numbers::pi * cutOff * distance;
      const double sinc = angle == 0 ? 1 : std::sin(angle) / angle;
      const double window = std::cyl_bessel_i(0.0, 9 * std::sqrt(1 - relative * relative));
      response.push_back(0.98 * cutOff * sinc * window / windowsMiddle_);
    }
    if (phase == 0) response.back() = 0;  // H away
    return response;
  }

  std::int64_t l_;  // the reduced ratio of output ...
  std::int64_t m_;  // ... to input; times are in 1/L input samples
  std::int64_t half_;
  double windowsMiddle_ = std::cyl_bessel_i(0.0, 9.0);
  std::vector<std::vector<double>> responses_;  // of the phases that were met
};

}  // namespace tests
