// One channel of a resampled stream: its recent input, its place in it, and its output.
#pragma once

#include <MediaAccessor/result_code.h>

#include <cstddef>

#include "pipeline/polyphase_filter.h"
#include "support/cft_array.h"

namespace Quorvex {

/// Sets up the filter for two frequencies in Hz. @return as PolyphaseFilter::Initialise; also
/// QVERR_BAD_STATE for an input frequency of some 62 times the output frequency and more: the
/// filter would be as long as the buffer of a channel.
QVERRORCODE_TAG InitialiseResampling(PolyphaseFilter& filter, int inputFrequency,
                                     int outputFrequency) noexcept;

/// The buffer of a channel:
///
///     margin | history | samples of the stream ...       | room | silence | margin
///            0         time                       filled_   4000
///
/// The stream begins on `history` zeros, at the time `history`. After each pass of the filter the
/// samples that are not needed again are moved out.
class SingleChannelResampler {
 public:
  /// Begins a stream.
  /// @param filter  not owned; shared by all channels.
  /// @return QVERR_OK; QVERR_CREATE_FAILED when memory runs out.
  QVERRORCODE_TAG Initialise(const PolyphaseFilter& filter) noexcept;

  /// For how many input samples there is room. After a pass it is never 0.
  std::size_t Room() const noexcept;
  /// Where they go. Advance says how many went there.
  float* End() noexcept;
  void Advance(std::size_t samples) noexcept;

  /// Empties the output and makes room in it for what `samples` more of input give.
  void BeginOutput(std::size_t samples) noexcept;
  /// Appends to the output what can be made of the input. Where there is no memory for it, it is
  /// dropped.
  void Run() noexcept;
  /// Makes the output what silence after the stream's end gives: the tail. The input stays as it
  /// is, and the time goes on, so that a second tail is empty and more input may follow.
  void Flush() noexcept;

  const CFTarray<short>& Output() const noexcept { return output_; }

 private:
  int ReadyLength() const noexcept;
  void Filter(int length) noexcept;

  const PolyphaseFilter* filter_ = nullptr;
  int history_ = 0;  // samples kept before the filter's position
  int filled_ = 0;
  double time_ = 0;  // of the next output sample, in input samples from the buffer's beginning
  CFTarray<float> memory_;
  float* input_ = nullptr;  // the buffer's beginning in memory_
  CFTarray<short> output_;
};

}  // namespace Quorvex
