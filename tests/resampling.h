// What tests of resampling share: the comparison with the filter in double precision, signals, and
// a source of them.
#pragma once

#include <MediaAccessor/all.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <utility>
#include <vector>

#include "tests/ideal_resampling.h"

namespace tests {

using Samples = std::vector<short>;

/// `actual` is the whole output for an input of one channel, from its sample `first` on. Each
/// sample is the exact value rounded, where that may have been off a little before: by what single
/// precision costs, or interpolating between stored phases where there are many. Counting the
/// samples that differ would say less: a signal that repeats itself comes near to where rounding
/// turns any number of times.
inline void ExpectResampled(IdealResampling& ideal, const Samples& input, const Samples& actual,
                            std::size_t first = 0) {
  const double error = ideal.Phases() > 2048 ? 0.3 : 0.02;
  const std::vector<double> exact = ideal.Of(input, first);
  ASSERT_EQ(actual.size(), exact.size());
  for (std::size_t k = 0; k < actual.size(); ++k) {
    ASSERT_NEAR(actual[k], std::clamp(exact[k], -32768.0, 32767.0), 0.5 + error) << first + k;
  }
}

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
