// The impulse response of the polyphase filter.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace Quorvex {

/// A sinc under a Kaiser window, at the distance d from its middle, in input samples:
///
///     h(d) = c sinc(c d) I0(beta sqrt(u)) / I0(beta)     u = 1 - (d/H)^2      for |d| < H, else 0
class WindowedSinc {
 public:
  /// @param cutOff      c, the -6 dB point in parts of the input's Nyquist frequency, above 0, to 1
  /// @param kaiserBeta  beta, 0 to 20
  /// @param half        H
  WindowedSinc(double cutOff, double kaiserBeta, std::int64_t half);

  /// Computes h(offset), h(offset + 1), ... up to h(offset + H - 1).
  /// @param offset  from 0 to below 1
  /// @param values  receives H of them.
  void Compute(double offset, double* values) const;

 private:
  static constexpr std::size_t kMostTerms = 48;  // enough for beta = 20

  const double cutOff_;
  const std::int64_t half_;
  std::array<double, kMostTerms> window_{};  // a polynomial in u, the highest power first
  std::size_t terms_ = 0;
};

}  // namespace Quorvex
