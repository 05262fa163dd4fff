// The mixer's loops in plain code, and who does what.
#include "pipeline/mix_loops.h"

#include <algorithm>
#include <cstdint>

namespace Quorvex {

void MixCombined(MixRule rule, const short* input, std::size_t frames, int inputChannels,
                 std::span<const int> selected, short* output) noexcept {
  const std::size_t done = MixCombinedVector(rule, input, frames, inputChannels, selected, output);
  MixCombinedPlain(rule, input + done * static_cast<std::size_t>(inputChannels), frames - done,
                   inputChannels, selected, output + done);
}

void MixCombinedPlain(MixRule rule, const short* input, std::size_t frames, int inputChannels,
                      std::span<const int> selected, short* output) noexcept {
  const auto stride = static_cast<std::size_t>(inputChannels);
  const bool divides = rule == MixRule::kAverage && selected.size() > 1;
  const auto divisor = divides ? static_cast<std::int32_t>(selected.size()) : 1;
  for (std::size_t f = 0; f < frames; ++f) {
    std::uint32_t sum = 0;  // wraps, should somebody select a channel 65,537 times
    for (const int channel : selected) {
      sum += static_cast<std::uint32_t>(input[f * stride + static_cast<std::size_t>(channel)]);
    }
    const std::int32_t value = static_cast<std::int32_t>(sum) / divisor;
    output[f] = static_cast<short>(std::clamp(value, kMixMinimum, kMixMaximum));
  }
}

void MixSeparate(const short* input, std::size_t frames, int inputChannels,
                 std::span<const int> selected, short* output) noexcept {
  // Channel by channel, in slices that stay in the first-level cache from one channel to the next.
  constexpr std::size_t kSliceFrames = 512;
  const auto stride = static_cast<std::size_t>(inputChannels);
  const std::size_t count = selected.size();
  for (std::size_t done = 0; done < frames; done += kSliceFrames) {
    const std::size_t end = std::min(done + kSliceFrames, frames);
    for (std::size_t s = 0; s < count; ++s) {
      const short* sample = input + done * stride + selected[s];
      for (std::size_t f = done; f < end; ++f, sample += stride) output[f * count + s] = *sample;
    }
  }
}

}  // namespace Quorvex
