// Interleaved channels taken apart and put together again.
#pragma once

#include <cstddef>

namespace Quorvex {

/// Takes the first `channels` out of frames of `stride` channels: outputs[c][f] becomes sample c of
/// frame f.
void Deinterleave(const short* input, std::size_t frames, std::size_t stride, std::size_t channels,
                  float* const* outputs) noexcept;

/// Puts channels in the first places of frames of `stride` channels: sample f of inputs[c] becomes
/// sample c of frame f.
void Interleave(const short* const* inputs, std::size_t channels, std::size_t frames,
                std::size_t stride, short* output) noexcept;

/// The same for whole frames, with vector instructions. @return how many of the first frames were
/// done: 0 where the processor has none that suit, or there are none for so many channels.
std::size_t DeinterleaveVector(const short* input, std::size_t frames, std::size_t channels,
                               float* const* outputs) noexcept;
std::size_t InterleaveVector(const short* const* inputs, std::size_t channels, std::size_t frames,
                             short* output) noexcept;

}  // namespace Quorvex
