// The plain loops, and who does what.
#include "pipeline/channel_split.h"

namespace Quorvex {

void SplitChannels(const short* input, std::size_t frames, std::size_t stride, std::size_t channels,
                   float* const* outputs) noexcept {
  const std::size_t done = SplitChannelsVector(input, frames, stride, channels, outputs);
  SplitChannelsPlain(input, done, frames, stride, channels, outputs);
}

void JoinChannels(const short* const* inputs, std::size_t channels, std::size_t frames,
                  short* output) noexcept {
  const std::size_t done = JoinChannelsVector(inputs, channels, frames, output);
  JoinChannelsPlain(inputs, channels, done, frames, output);
}

void SplitChannelsPlain(const short* input, std::size_t first, std::size_t frames,
                        std::size_t stride, std::size_t channels, float* const* outputs) noexcept {
  for (std::size_t c = 0; c < channels; ++c) {
    float* const output = outputs[c];
    for (std::size_t f = first; f < frames; ++f) output[f] = input[f * stride + c];
  }
}

void JoinChannelsPlain(const short* const* inputs, std::size_t channels, std::size_t first,
                       std::size_t frames, short* output) noexcept {
  for (std::size_t c = 0; c < channels; ++c) {
    const short* const input = inputs[c];
    for (std::size_t f = first; f < frames; ++f) output[f * channels + c] = input[f];
  }
}

}  // namespace Quorvex
