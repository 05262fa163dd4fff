// The plain loops, which do what the vector ones leave.
#include "pipeline/interleaving.h"

namespace Quorvex {

void Deinterleave(const short* input, std::size_t frames, std::size_t stride, std::size_t channels,
                  float* const* outputs) noexcept {
  const std::size_t done =
      channels == stride ? DeinterleaveVector(input, frames, channels, outputs) : 0;
  for (std::size_t c = 0; c < channels; ++c) {
    float* const output = outputs[c];
    for (std::size_t f = done; f < frames; ++f) output[f] = input[f * stride + c];
  }
}

void Interleave(const short* const* inputs, std::size_t channels, std::size_t frames,
                std::size_t stride, short* output) noexcept {
  const std::size_t done =
      channels == stride ? InterleaveVector(inputs, channels, frames, output) : 0;
  for (std::size_t c = 0; c < channels; ++c) {
    const short* const input = inputs[c];
    for (std::size_t f = done; f < frames; ++f) output[f * stride + c] = input[f];
  }
}

}  // namespace Quorvex
