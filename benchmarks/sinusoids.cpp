// Sums of sinusoids, and their least-squares fit by the normal equations. With frequencies that far
// apart those are almost diagonal.
#include "benchmarks/sinusoids.h"

#include <cmath>
#include <complex>
#include <numbers>
#include <utility>

namespace benchmarks {
namespace {

constexpr double kTurn = 2 * std::numbers::pi;

// The constant, then cosine and sine of each frequency, sample by sample.
class Basis {
 public:
  explicit Basis(std::span<const double> frequencies) : values_(1 + 2 * frequencies.size(), 1.0) {
    for (const double frequency : frequencies) {
      turns_.push_back(std::polar(1.0, kTurn * frequency));
      vectors_.emplace_back(1.0);
    }
  }
  const std::vector<double>& Next() {
    for (std::size_t i = 0; i < vectors_.size(); ++i) {
      values_[1 + 2 * i] = vectors_[i].real();
      values_[2 + 2 * i] = vectors_[i].imag();
      vectors_[i] *= turns_[i];
    }
    return values_;
  }

 private:
  std::vector<std::complex<double>> turns_;
  std::vector<std::complex<double>> vectors_;
  std::vector<double> values_;
};

// Gauss, without a search for pivots: the matrix is positive definite. Each row has its right side
// at its end.
std::vector<double> Solve(std::vector<std::vector<double>> rows) {
  const std::size_t size = rows.size();
  for (std::size_t i = 0; i < size; ++i) {
    for (std::size_t below = i + 1; below < size; ++below) {
      const double factor = rows[below][i] / rows[i][i];
      for (std::size_t k = i; k <= size; ++k) rows[below][k] -= factor * rows[i][k];
    }
  }
  std::vector<double> solution(size);
  for (std::size_t i = size; i-- > 0;) {
    double rest = rows[i][size];
    for (std::size_t k = i + 1; k < size; ++k) rest -= rows[i][k] * solution[k];
    solution[i] = rest / rows[i][i];
  }
  return solution;
}

}  // namespace

std::vector<short> MakeSinusoids(std::size_t samples, std::span<const Sinusoid> sinusoids,
                                 double constant) {
  std::vector<double> sum(samples, constant);
  double phase = 0.3;  // any, each another
  for (const Sinusoid& each : sinusoids) {
    for (std::size_t i = 0; i < samples; ++i) {
      const double angle = kTurn * each.frequency * static_cast<double>(i);
      sum[i] += each.amplitude * std::sin(angle + phase);
    }
    phase += 1;
  }
  std::vector<short> rounded(samples);
  for (std::size_t i = 0; i < samples; ++i) rounded[i] = static_cast<short>(std::lround(sum[i]));
  return rounded;
}

SinusoidFit FitSinusoids(std::span<const double> signal, std::span<const double> frequencies) {
  const std::size_t size = 1 + 2 * frequencies.size();
  std::vector<std::vector<double>> rows(size, std::vector<double>(size + 1));
  Basis basis(frequencies);
  for (const double sample : signal) {
    const std::vector<double>& values = basis.Next();
    for (std::size_t i = 0; i < size; ++i) {
      for (std::size_t k = i; k < size; ++k) rows[i][k] += values[i] * values[k];
      rows[i][size] += values[i] * sample;
    }
  }
  for (std::size_t i = 0; i < size; ++i) {
    for (std::size_t k = 0; k < i; ++k) rows[i][k] = rows[k][i];
  }
  const std::vector<double> found = Solve(std::move(rows));

  SinusoidFit fit = {found[0], {}, 0};
  for (std::size_t i = 1; i < size; i += 2) {
    fit.amplitudes.push_back(std::hypot(found[i], found[i + 1]));
  }
  Basis again(frequencies);
  for (const double sample : signal) {
    const std::vector<double>& values = again.Next();
    double left = sample;
    for (std::size_t i = 0; i < size; ++i) left -= found[i] * values[i];
    fit.residual += left * left / static_cast<double>(signal.size());
  }
  return fit;
}

}  // namespace benchmarks
