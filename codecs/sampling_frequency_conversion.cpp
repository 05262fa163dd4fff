// A conversion, a pass of the filter at a time.
#include "codecs/sampling_frequency_conversion.h"

#include <algorithm>

#include "pipeline/interleaving.h"

namespace Quorvex {

QVERRORCODE_TAG SamplingFrequencyConversion::SetUp(int inputFrequency,
                                                   int outputFrequency) noexcept {
  const QVERRORCODE_TAG result = InitializeResampling(filter_, inputFrequency, outputFrequency);
  if (result != QVERR_OK) return result;
  const ResamplingPass pass =
      PlanPass(filter_, inputFrequency, outputFrequency, SingleChannelResampler::kMostInput);
  passInput_ = pass.input;
  return output_.Resize(pass.output) && Restart() ? QVERR_OK : QVERR_CREATE_FAILED;
}

bool SamplingFrequencyConversion::Restart() noexcept {
  return resampler_.Initialize(filter_, passInput_) == QVERR_OK;
}

std::span<const short> SamplingFrequencyConversion::Convert(
    std::span<const short>& input) noexcept {
  const std::size_t taken = std::min(input.size(), passInput_);
  float* const end = resampler_.End();
  Deinterleave(input.data(), taken, 1, 1, &end);
  input = input.subspan(taken);
  const std::size_t count = resampler_.OutputCount(taken);
  resampler_.Run(taken, output_.Data());
  return {output_.Data(), count};
}

std::span<const short> SamplingFrequencyConversion::Flush() noexcept {
  const std::size_t count = resampler_.TailCount();
  resampler_.Flush(output_.Data());
  return {output_.Data(), count};
}

}  // namespace Quorvex
