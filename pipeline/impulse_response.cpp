// The impulse response
//
//     h(d) = c sinc(c d) I0(beta sqrt(u)) / I0(beta)      u = 1 - (d/H)^2
//
// The sine comes from turning a vector by a constant angle; in double precision it loses 1e-12 in
// the longest response. I0, the modified Bessel function, is the sum over k of
// ((x/2)^k / k!)^2 (Abramowitz and Stegun, 9.6.12), so the window is a polynomial in u.
#include "pipeline/impulse_response.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <numbers>

namespace Quorvex {
namespace {

constexpr std::size_t kMostTerms = 48;  // enough for beta = 20
constexpr double kNegligible = 1e-11;   // beside a sum of at least 1: coefficients have 24 bits

// The Kaiser window as a polynomial in u, the highest power first.
class KaiserPolynomial {
 public:
  explicit KaiserPolynomial(double beta) {
    double term = 1;
    double sum = 0;
    for (double k = 1; count_ < kMostTerms && term > kNegligible * sum; ++k) {
      sum += term;
      terms_[count_++] = term;
      term *= beta * beta / 4 / (k * k);
    }
    std::reverse(terms_.begin(), terms_.begin() + static_cast<std::ptrdiff_t>(count_));
    for (double& each : terms_) each /= sum;
  }

  /// Turns values of u into those of the window; several at once, since each waits for itself.
  template <std::size_t kCount>
  void Apply(std::array<double, kCount>& values) const {
    const std::array<double, kCount> u = values;
    values.fill(0);
    for (std::size_t term = 0; term < count_; ++term) {
      for (std::size_t i = 0; i < kCount; ++i) values[i] = values[i] * u[i] + terms_[term];
    }
  }

 private:
  std::array<double, kMostTerms> terms_{};
  std::size_t count_ = 0;
};

}  // namespace

std::int64_t ImpulseResponseSize(const WindowedSinc& sinc) { return sinc.half * sinc.perInput + 1; }

void ComputeImpulseResponse(const WindowedSinc& sinc, double* values) {
  constexpr std::int64_t kBlock = 16;
  const KaiserPolynomial window(sinc.kaiserBeta);
  const std::int64_t end = sinc.half * sinc.perInput;
  const double spacing = 1 / static_cast<double>(sinc.perInput);
  const double relative = 1 / static_cast<double>(end);
  const std::complex<double> turn = std::polar(1.0, std::numbers::pi * sinc.cutOff * spacing);
  std::complex<double> vector = 1;
  for (std::int64_t first = 0; first < end; first += kBlock) {
    std::array<double, kBlock> taper;
    for (std::int64_t i = 0; i < kBlock; ++i) {
      const double distance = static_cast<double>(first + i) * relative;
      taper[static_cast<std::size_t>(i)] = 1 - distance * distance;
    }
    window.Apply(taper);
    const std::int64_t count = std::min(kBlock, end - first);
    for (std::int64_t i = 0; i < count; ++i) {
      const double angle = std::numbers::pi * spacing * static_cast<double>(first + i);
      values[first + i] = vector.imag() / angle * taper[static_cast<std::size_t>(i)];
      vector = {vector.real() * turn.real() - vector.imag() * turn.imag(),
                vector.real() * turn.imag() + vector.imag() * turn.real()};
    }
  }
  values[0] = sinc.cutOff;
  values[end] = 0;
}

}  // namespace Quorvex
