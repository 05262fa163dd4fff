// The loops of the mixer, alone. Each reads `frames` interleaved 16-bit frames of `inputChannels`
// channels; the selected indices are below `inputChannels`. Input and output do not overlap.
#pragma once

#include <cstddef>
#include <span>

namespace Quorvex {

/// The samples that combining channels gives are clipped to this range. The lower bound is -32767,
/// not -32768, on purpose.
inline constexpr int kMixMinimum = -32767;
inline constexpr int kMixMaximum = 32767;

enum class MixRule {
  kSum,      ///< the sum of the selected channels, clipped
  kAverage,  ///< divided by their number, truncating towards zero, and clipped; of none: silence
};

/// Combines the selected channels: one sample a frame.
void MixCombined(MixRule rule, const short* input, std::size_t frames, int inputChannels,
                 std::span<const int> selected, short* output) noexcept;

/// Keeps the selected channels as they are: selected.size() samples a frame.
void MixSeparate(const short* input, std::size_t frames, int inputChannels,
                 std::span<const int> selected, short* output) noexcept;

/// MixCombined in plain code, for any selection.
void MixCombinedPlain(MixRule rule, const short* input, std::size_t frames, int inputChannels,
                      std::span<const int> selected, short* output) noexcept;

/// MixCombined with the vector instructions that every processor of the build's kind has, where
/// that pays. @return for how many of the first frames it was done, the others being left: 0 where
/// there are no such instructions or they do not fit the selection.
std::size_t MixCombinedVector(MixRule rule, const short* input, std::size_t frames,
                              int inputChannels, std::span<const int> selected,
                              short* output) noexcept;

}  // namespace Quorvex
