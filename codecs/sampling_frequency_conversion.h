// SamplingFrequencyConversion: mono PCM at one sampling frequency in, at another out, by the filter
// of the resampling accessor.
#pragma once

#include <MediaAccessor/result_code.h>

#include <cstddef>
#include <span>

#include "pipeline/single_channel_resampler.h"
#include "support/cft_array.h"

namespace Quorvex {

class SamplingFrequencyConversion {
 public:
  /// Sets the conversion up, and begins a stream.
  /// @return as InitializeResampling; QVERR_CREATE_FAILED when memory runs out.
  QVERRORCODE_TAG SetUp(int inputFrequency, int outputFrequency) noexcept;

  /// Begins another stream. @return false when memory runs out.
  bool Restart() noexcept;

  /// Converts as much of the input as a pass takes, and steps over it.
  /// @return what came of it, which may be nothing; valid until the next call.
  std::span<const short> Convert(std::span<const short>& input) noexcept;

  /// What silence after the stream's end still gives; valid until the next call.
  std::span<const short> Flush() noexcept;

 private:
  PolyphaseFilter filter_;
  SingleChannelResampler resampler_;
  std::size_t passInput_ = 0;
  CFTarray<short> output_;  // room for a pass
};

}  // namespace Quorvex
