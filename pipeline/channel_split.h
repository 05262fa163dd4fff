// Interleaved channels taken apart and put together again.
#pragma once

#include <cstddef>

namespace Quorvex {

/// Takes the first `channels` of `stride` interleaved channels apart: outputs[c][f] becomes sample
/// c of frame f. Blocks do not overlap.
void SplitChannels(const short* input, std::size_t frames, std::size_t stride, std::size_t channels,
                   float* const* outputs) noexcept;

/// Interleaves channels: sample f of inputs[c] becomes sample c of frame f.
void JoinChannels(const short* const* inputs, std::size_t channels, std::size_t frames,
                  short* output) noexcept;

/// The same in plain code, from frame `first` on.
void SplitChannelsPlain(const short* input, std::size_t first, std::size_t frames,
                        std::size_t stride, std::size_t channels, float* const* outputs) noexcept;
void JoinChannelsPlain(const short* const* inputs, std::size_t channels, std::size_t first,
                       std::size_t frames, short* output) noexcept;

/// The same with the vector instructions that every processor of the build's kind has, where there
/// are some for the number of channels. @return how many of the first frames were done.
std::size_t SplitChannelsVector(const short* input, std::size_t frames, std::size_t stride,
                                std::size_t channels, float* const* outputs) noexcept;
std::size_t JoinChannelsVector(const short* const* inputs, std::size_t channels, std::size_t frames,
                               short* output) noexcept;

}  // namespace Quorvex
