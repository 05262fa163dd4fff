// The resampling filter by its definition, in double precision: what the library's vectors and
// tables are held against.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <numeric>
#include <vector>

namespace tests {

/// A windowed sinc of 32 samples of the lower frequency on either side; roll-off 0.95, Kaiser
/// parameter 9, gain 0.98.
class IdealResampling {
 public:
  IdealResampling(int input, int output)
      : input_(input / std::gcd(input, output)),
        output_(output / std::gcd(input, output)),
        half_(32 * std::max(input_, output_) / output_),
        responses_(static_cast<std::size_t>(output_)) {}

  /// @param channels  interleaved; each is a stream of its own.
  std::vector<short> Of(const std::vector<short>& samples, std::size_t channels) {
    const auto frames = static_cast<std::int64_t>(samples.size() / channels);
    std::vector<short> resampled;
    for (std::int64_t n = 0; n * input_ < frames * output_; ++n) {
      const std::vector<double>& response = Response(n * input_ % output_);
      const std::int64_t first = n * input_ / output_ - half_ + 1;
      const std::int64_t end = std::min(first + 2 * half_, frames);
      for (std::size_t c = 0; c < channels; ++c) {
        double sum = 0;
        for (std::int64_t i = std::max(first, std::int64_t{0}); i < end; ++i) {
          sum += response[static_cast<std::size_t>(i - first)] *
                 samples[static_cast<std::size_t>(i) * channels + c];
        }
        sum = std::clamp(0.98 * sum, -32768.0, 32767.0);
        resampled.push_back(static_cast<short>(std::lround(sum)));
      }
    }
    return resampled;
  }

 private:
  // Of 2 x half_ input samples, for a time that is phase / output_ after one of them.
  const std::vector<double>& Response(std::int64_t phase) {
    std::vector<double>& response = responses_[static_cast<std::size_t>(phase)];
    if (!response.empty()) return response;
    const double cutoff =
        0.95 * static_cast<double>(std::min(input_, output_)) / static_cast<double>(input_);
    const auto half = static_cast<double>(half_);
    for (std::int64_t i = 1 - half_; i <= half_; ++i) {
      const double distance =
          static_cast<double>(phase) / static_cast<double>(output_) - static_cast<double>(i);
      const double angle = std::numbers::pi * cutoff * distance;
      const double sinc = distance == 0 ? 1 : std::sin(angle) / angle;
      const double slope = std::sqrt(1 - distance * distance / (half * half));
      response.push_back(cutoff * sinc * std::cyl_bessel_i(0.0, 9 * slope) /
                         std::cyl_bessel_i(0.0, 9.0));
    }
    return response;
  }

  std::int64_t input_;
  std::int64_t output_;
  std::int64_t half_;
  std::vector<std::vector<double>> responses_;  // of the phases that were met
};

}  // namespace tests
