// The loops of the mixer, alone. Each reads `frames` interleaved 16-bit frames of `inputChannels`
// channels; the selected indices are below `inputChannels`. Input and output do not overlap.
#pragma once

#include <cstddef>
#include <span>

namespace Quorvex {

/// The smallest sample that combining channels gives: -32767, not -32768, on purpose.
inline constexpr int kMixMinimum = -32767;
inline constexpr int kMixMaximum = 32767;

/// One sample a frame: the sum of the selected channels, clipped.
void MixSum(const short* input, std::size_t frames, int inputChannels,
            std::span<const int> selected, short* output) noexcept;

/// One sample a frame: the sum divided by the number of selected channels, truncating towards zero,
/// clipped. The average of no channels is silence.
void MixAverage(const short* input, std::size_t frames, int inputChannels,
                std::span<const int> selected, short* output) noexcept;

/// selected.size() samples a frame: the selected channels as they are.
void MixSeparate(const short* input, std::size_t frames, int inputChannels,
                 std::span<const int> selected, short* output) noexcept;

}  // namespace Quorvex
