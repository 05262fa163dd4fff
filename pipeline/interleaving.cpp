// The plain loops, which do what the vector ones leave.
#include "pipeline/interleaving.h"

namespace Quorvex {

void Deinterleave(const short* input, std::size_t frames, std::size_t channels,
                  float* const* outputs) noexcept {
  const std::size_t done = DeinterleaveVector(input, frames, channels, outputs);
  for (std::size_t c = 0; c < channels; ++c) {
    float* const output = outputs[c];
    for (std::size_t f = done; f < frames; ++f) output[f] = input[f * channels + c];
  }
}

void Interleave(const short* const* inputs, std::size_t channels, std::size_t frames,
                short* output) noexcept {
  const std::size_t done = InterleaveVector(inputs, channels, frames, output);
  for (std::size_t c = 0; c < channels; ++c) {
    const short* const input = inputs[c];
    for (std::size_t f = done; f < frames; ++f) output[f * channels + c] = input[f];
  }
}

}  // namespace Quorvex
