// The resampling filter evaluated in double precision from its formula, and sources of signals to
// try it on.
#pragma once

#include <MediaAccessor/all.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <limits>
#include <numbers>
#include <numeric>
#include <random>
#include <utility>
#include <vector>

namespace tests {

using Samples = std::vector<short>;

/// The formula is that of pipeline/polyphase_filter.h, the constants those which
/// ResamplingMediaAccessor documents.
class ReferenceFilter {
 public:
  ReferenceFilter(int input, int output)
      : l_(output / std::gcd(input, output)),
        m_(input / std::gcd(input, output)),
        half_(std::max<std::int64_t>(32, std::int64_t{32} * input / output)),
        cutOff_(0.95 * std::min(1.0, static_cast<double>(output) / input)),
        response_(static_cast<std::size_t>(half_ * l_), std::numeric_limits<double>::quiet_NaN()) {}

  /// `actual` is the whole output for an input, from its sample `first` on. Each sample is the
  /// exact value rounded, where that may have been off a little before: by what single precision
  /// costs, or interpolating between stored phases where there are many. Counting the samples that
  /// differ would say less: a signal that repeats itself comes near to where rounding turns any
  /// number of times.
  void ExpectFrom(const Samples& input, const Samples& actual, std::size_t first = 0) {
    const double error = l_ > 2048 ? 0.3 : 0.02;
    const auto end = static_cast<std::int64_t>(input.size());
    ASSERT_EQ(static_cast<std::int64_t>(first + actual.size()), (end * l_ + m_ - 1) / m_);
    for (std::size_t k = 0; k < actual.size(); ++k) {
      const auto time = static_cast<std::int64_t>(first + k) * m_;  // in 1/L input samples
      double sum = 0;
      const std::int64_t last = std::min(end, time / l_ + half_ + 1);
      for (auto j = std::max<std::int64_t>(0, time / l_ - half_); j < last; ++j) {
        sum += input[static_cast<std::size_t>(j)] * Response(std::abs(time - j * l_));
      }
      ASSERT_NEAR(actual[k], std::clamp(0.98 * sum, -32768.0, 32767.0), 0.5 + error) << k;
    }
  }

 private:
  double Response(std::int64_t distance) {
    if (distance >= half_ * l_) return 0;
    double& value = response_[static_cast<std::size_t>(distance)];
    if (std::isnan(value)) {
      const double d = static_cast<double>(distance) / static_cast<double>(l_);
      const double angle = std::numbers::pi * cutOff_ * d;
      const double part = d / static_cast<double>(half_);
      value = cutOff_ * (angle == 0 ? 1 : std::sin(angle) / angle) *
              std::cyl_bessel_i(0, 9 * std::sqrt(1 - part * part)) / std::cyl_bessel_i(0, 9);
    }
    return value;
  }

  std::int64_t l_;
  std::int64_t m_;
  std::int64_t half_;
  double cutOff_;
  std::vector<double> response_;  // what was asked for so far; not a number: not yet
};

inline Samples Noise(std::size_t count, int amplitude = 32767, unsigned seed = 1) {
  std::minstd_rand random(seed);
  std::uniform_int_distribution<int> value(-amplitude, amplitude);
  Samples samples(count);
  for (short& sample : samples) sample = static_cast<short>(value(random));
  return samples;
}

inline Samples FullScaleSquare(std::size_t count) {
  Samples samples(count);
  for (std::size_t i = 0; i < count; ++i) samples[i] = i / 150 % 2 == 0 ? 32767 : -32768;
  return samples;
}

/// Delivers what a function makes, as often as it is asked.
struct MadeSource : Quorvex::CMediaAccessor {
  MadeSource(int hertz, unsigned long count, std::function<Samples()> make)
      : frequency(static_cast<unsigned long>(hertz)), channels(count), next(std::move(make)) {}

  unsigned long GetSamplingFrequency() const override { return frequency; }
  unsigned long GetChannelCount() const override { return channels; }
  using CMediaAccessor::GetDescription;
  unsigned long GetDescription(wchar_t*, unsigned long) const override { return 1; }
  Quorvex::QVERRORCODE_TAG ReadBlock(const short*& samples, unsigned long& frames, void*) override {
    const unsigned long count = channels;  // `next` may change it for the block after this one
    block = next();
    samples = block.data();
    frames = static_cast<unsigned long>(block.size() / count);
    return Quorvex::QVERR_OK;
  }

  unsigned long frequency;
  unsigned long channels;
  std::function<Samples()> next;
  Samples block;
};

}  // namespace tests
