// One channel of a resampled stream: its recent input, its place in it, and its output.
#pragma once

#include <MediaAccessor/result_code.h>

#include <cstddef>

#include "pipeline/aligned_floats.h"
#include "pipeline/polyphase_filter.h"

namespace Quorvex {

/// Sets up the filter for two frequencies in Hz. @return as PolyphaseFilter::Initialize; also
/// QVERR_BAD_STATE for an input frequency of 62.46875 times the output frequency and more, on
/// purpose: it bounds the filter and the buffer of a channel.
QVERRORCODE_TAG InitializeResampling(PolyphaseFilter& filter, int inputFrequency,
                                     int outputFrequency) noexcept;

/// How much a pass of the filter takes and makes.
struct ResamplingPass {
  std::size_t input = 0;   ///< samples of a channel, at least 1
  std::size_t output = 0;  ///< room for what a pass, or the end of the stream, makes at most
};

/// Plans passes that keep buffers small whatever the frequencies.
/// @param most  input samples of a channel, 1 to SingleChannelResampler::kMostInput.
ResamplingPass PlanPass(const PolyphaseFilter& filter, int inputFrequency, int outputFrequency,
                        std::size_t most) noexcept;

/// One channel. Its buffer:
///
///     margin | history | samples of the stream ...       | room | silence | margin
///            0         time                       filled_
///
/// The stream begins on `history` zeros, at the time `history`. After each pass of the filter the
/// samples that are not needed again are moved out, in whole steps of kPolyphaseStep.
class SingleChannelResampler {
 public:
  /// Longer passes save nothing, and leave the first-level cache.
  static constexpr std::size_t kMostInput = 4096;

  /// Begins a stream.
  /// @param filter  not owned; shared by all channels.
  /// @param most    input samples in a pass, at most kMostInput.
  /// @return QVERR_OK; QVERR_CREATE_FAILED when memory runs out.
  QVERRORCODE_TAG Initialize(const PolyphaseFilter& filter, std::size_t most) noexcept;

  /// Where the input of a pass goes.
  float* End() noexcept { return input_ + filled_; }

  /// How many output samples a pass makes when so many more input samples have come.
  std::size_t OutputCount(std::size_t samples) const noexcept;
  /// A pass: takes `samples`, no more than it was set up for, that stand at the end, and makes what
  /// can be made.
  /// @param output  receives OutputCount(samples) samples; null drops them.
  void Run(std::size_t samples, short* output) noexcept;

  /// How many output samples silence after the stream's end gives.
  std::size_t TailCount() const noexcept;
  /// Makes them. The input stays as it is and the time goes on, so that a second tail is empty and
  /// more input may follow.
  /// @param output  receives TailCount() samples; null drops them.
  void Flush(short* output) noexcept;

 private:
  std::int64_t Length(std::size_t filled) const noexcept;

  const PolyphaseFilter* filter_ = nullptr;
  std::size_t history_ = 0;  // samples kept before the filter's position
  std::size_t filled_ = 0;
  double time_ = 0;  // of the next output sample, in input samples from the buffer's beginning
  AlignedFloats memory_;
  float* input_ = nullptr;  // the buffer's beginning, in memory_
};

}  // namespace Quorvex
