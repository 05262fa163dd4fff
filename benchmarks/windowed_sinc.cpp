// h(d) = c sinc(c d) I0(9 sqrt(1 - (d/H)^2)) / I0(9), c = 0.95 min(1, out/in),
// H = trunc(32 max(1, in/out)), at a gain of 0.98.
#include "benchmarks/windowed_sinc.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>

namespace benchmarks {

WindowedSinc::WindowedSinc(unsigned input, unsigned output)
    : l_(output / std::gcd(input, output)), m_(input / std::gcd(input, output)) {
  constexpr double kBeta = 9;
  constexpr double kGain = 0.98;
  const double factor = std::min(1.0, static_cast<double>(output) / input);
  const double cutOff = 0.95 * factor;
  half_ = static_cast<std::int64_t>(std::trunc(32 / factor));
  response_.push_back(kGain * cutOff);
  for (std::int64_t i = 1; i < half_ * l_; ++i) {
    const double distance = static_cast<double>(i) / static_cast<double>(l_);
    const double relative = distance / static_cast<double>(half_);
    const double window = std::cyl_bessel_i(0.0, kBeta * std::sqrt(1 - relative * relative)) /
                          std::cyl_bessel_i(0.0, kBeta);
    const double angle = std::numbers::pi * distance;
    response_.push_back(kGain * std::sin(cutOff * angle) / angle * window);
  }
  response_.push_back(0);
}

std::vector<double> WindowedSinc::Resample(std::span<const short> input) const {
  const auto count = static_cast<std::int64_t>(input.size());
  std::vector<double> output;
  for (std::int64_t position = 0; position < count * l_; position += m_) {  // in 1/L input samples
    const std::int64_t sample = position / l_;
    const std::int64_t first = std::max<std::int64_t>(0, sample - half_ + 1);
    const std::int64_t last = std::min(count - 1, sample + half_);
    double sum = 0;
    for (std::int64_t k = first; k <= last; ++k) {
      sum += input[static_cast<std::size_t>(k)] *
             response_[static_cast<std::size_t>(std::abs(position - k * l_))];
    }
    output.push_back(sum);
  }
  return output;
}

}  // namespace benchmarks
