// The plain loops, which do what the vector ones leave.
#include "pipeline/channel_split.h"

namespace Quorvex {

void SplitChannels(const short* input, std::size_t frames, std::size_t channels,
                   float* const* outputs) noexcept {
  const std::size_t done = SplitChannelsVector(input, frames, channels, outputs);
  for (std::size_t c = 0; c < channels; ++c) {
    float* const output = outputs[c];
    for (std::size_t f = done; f < frames; ++f) output[f] = input[f * channels + c];
  }
}

void JoinChannels(const short* const* inputs, std::size_t channels, std::size_t frames,
                  short* output) noexcept {
  const std::size_t done = JoinChannelsVector(inputs, channels, frames, output);
  for (std::size_t c = 0; c < channels; ++c) {
    const short* const input = inputs[c];
    for (std::size_t f = done; f < frames; ++f) output[f * channels + c] = input[f];
  }
}

}  // namespace Quorvex
