// Sums of sinusoids: made, and found again in a signal that holds them at known frequencies.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace benchmarks {

struct Sinusoid {
  double frequency;  ///< in cycles a sample
  double amplitude;  ///< in 16-bit scale
};

/// Their sum and a constant, rounded to 16 bits. None of it may reach beyond full scale.
std::vector<short> MakeSinusoids(std::size_t samples, std::span<const Sinusoid> sinusoids,
                                 double constant = 0);

struct SinusoidFit {
  double constant;
  std::vector<double> amplitudes;
  double residual;  ///< the mean square of what is left
};

/// The constant and the sinusoids of these frequencies, in cycles a sample, of any phase, that
/// together leave the least squares. Frequencies are to differ by two cycles in the signal at
/// least.
SinusoidFit FitSinusoids(std::span<const double> signal, std::span<const double> frequencies);

}  // namespace benchmarks
