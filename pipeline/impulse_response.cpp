// The sine comes from the recurrence sin(a + 2 b) = 2 cos(b) sin(a + b) - sin(a); in double
// precision it loses 1e-11 in the longest response. I0, the modified Bessel function, is the sum
// over k of ((x/2)^k / k!)^2 (Abramowitz and Stegun, 9.6.12), so the window is a polynomial in u.
#include "pipeline/impulse_response.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Quorvex {
namespace {

constexpr double kNegligible = 1e-9;  // beside the window's 1: coefficients have 24 bits

}  // namespace

WindowedSinc::WindowedSinc(double cutOff, double kaiserBeta, std::int64_t half)
    : cutOff_(cutOff), half_(half) {
  double term = 1;
  double sum = 0;
  for (double k = 1; terms_ < kMostTerms && term > kNegligible * sum; ++k) {
    sum += term;
    window_[terms_++] = term;
    term *= kaiserBeta * kaiserBeta / 4 / (k * k);
  }
  std::reverse(window_.begin(), window_.begin() + static_cast<std::ptrdiff_t>(terms_));
  for (double& each : window_) each /= sum;
}

void WindowedSinc::Compute(double offset, double* values) const {
  constexpr std::int64_t kBlock = 16;  // at once, since a polynomial's terms wait for each other
  const double turn = std::numbers::pi * cutOff_;
  const double factor = 2 * std::cos(turn);
  double before = std::sin(turn * (offset - 1));
  double sine = std::sin(turn * offset);
  for (std::int64_t first = 0; first < half_; first += kBlock) {
    std::array<double, kBlock> u;
    std::array<double, kBlock> taper{};
    for (std::size_t i = 0; i < kBlock; ++i) {
      const double distance = (offset + static_cast<double>(first) + static_cast<double>(i)) /
                              static_cast<double>(half_);
      u[i] = 1 - distance * distance;
    }
    for (std::size_t term = 0; term < terms_; ++term) {
      for (std::size_t i = 0; i < kBlock; ++i) taper[i] = taper[i] * u[i] + window_[term];
    }
    const std::int64_t count = std::min(kBlock, half_ - first);
    for (std::int64_t i = 0; i < count; ++i) {
      const double angle = std::numbers::pi * (offset + static_cast<double>(first + i));
      values[first + i] = sine / angle * taper[static_cast<std::size_t>(i)];
      const double next = factor * sine - before;
      before = sine;
      sine = next;
    }
  }
  if (offset == 0) values[0] = cutOff_;
}

}  // namespace Quorvex
