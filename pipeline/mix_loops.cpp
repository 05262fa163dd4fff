// Combining works on slices that stay in the first-level cache, in two steps:
//
//     input  --gather-->  one 32-bit sum a frame  --finish-->  16-bit output
//
// so that the second step, and the first where the channels lie side by side, is plain vector code.
#include "pipeline/mix_loops.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace Quorvex {
namespace {

constexpr std::size_t kSliceFrames = 1024;

// Up to this many channels a sum (at most n x 2^15) is exact in single precision, and the rounding
// of the quotient (2^-10 at most, below 2^15) is smaller than its distance from the next integer
// (1/n at least), so truncating it gives the integer quotient.
constexpr std::size_t kFloatDivisionLimit = 256;

// Sums wrap like 32-bit integers should somebody select a channel 65,537 times.
using Sum = std::uint32_t;

template <int kChannels>
void GatherAll(const short* input, std::size_t frames, Sum* sums) {
  for (std::size_t f = 0; f < frames; ++f) {
    Sum sum = 0;
    for (int c = 0; c < kChannels; ++c) {
      sum += static_cast<Sum>(input[f * kChannels + static_cast<std::size_t>(c)]);
    }
    sums[f] = sum;
  }
}

// A stereo frame is one 32-bit word: two shifts take it apart without a shuffle.
template <>
void GatherAll<2>(const short* input, std::size_t frames, Sum* sums) {
  for (std::size_t f = 0; f < frames; ++f) {
    std::int32_t frame = 0;
    std::memcpy(&frame, input + f * 2, sizeof frame);
    const std::int32_t first =
        static_cast<std::int32_t>(static_cast<std::uint32_t>(frame) << 16) >> 16;
    sums[f] = static_cast<Sum>(first + (frame >> 16));
  }
}

void GatherSelected(const short* input, std::size_t frames, std::size_t stride,
                    std::span<const int> selected, Sum* sums) {
  std::fill_n(sums, frames, Sum{0});
  for (const int channel : selected) {
    const short* sample = input + channel;
    for (std::size_t f = 0; f < frames; ++f, sample += stride) sums[f] += static_cast<Sum>(*sample);
  }
}

bool SelectsAllInOrder(int inputChannels, std::span<const int> selected) {
  if (selected.size() != static_cast<std::size_t>(inputChannels)) return false;
  for (int c = 0; c < inputChannels; ++c) {
    if (selected[static_cast<std::size_t>(c)] != c) return false;
  }
  return true;
}

using Gather = void (*)(const short* input, std::size_t frames, Sum* sums);

Gather GatherFor(int inputChannels, std::span<const int> selected) {
  static constexpr Gather kGatherAll[] = {nullptr,      nullptr,      GatherAll<2>,
                                          GatherAll<3>, GatherAll<4>, GatherAll<5>,
                                          GatherAll<6>, GatherAll<7>, GatherAll<8>};
  const auto index = static_cast<std::size_t>(inputChannels);
  return index < std::size(kGatherAll) && SelectsAllInOrder(inputChannels, selected)
             ? kGatherAll[index]
             : nullptr;
}

template <class Finish>
void Combine(const short* input, std::size_t frames, int inputChannels,
             std::span<const int> selected, short* output, const Finish& finish) {
  Sum sums[kSliceFrames];
  const auto stride = static_cast<std::size_t>(inputChannels);
  const Gather gather = GatherFor(inputChannels, selected);
  for (std::size_t done = 0; done < frames;) {
    const std::size_t count = std::min(frames - done, kSliceFrames);
    const short* slice = input + done * stride;
    if (gather != nullptr) {
      gather(slice, count, sums);
    } else {
      GatherSelected(slice, count, stride, selected, sums);
    }
    for (std::size_t f = 0; f < count; ++f) {
      output[done + f] = finish(static_cast<std::int32_t>(sums[f]));
    }
    done += count;
  }
}

short Clip(std::int32_t value) {
  return static_cast<short>(std::clamp(value, kMixMinimum, kMixMaximum));
}

// A quotient fits 16 bits, so only the lower bound is left to clip.
short ClipQuotient(std::int32_t quotient) {
  return std::max(static_cast<short>(quotient), static_cast<short>(kMixMinimum));
}

}  // namespace

void MixSum(const short* input, std::size_t frames, int inputChannels,
            std::span<const int> selected, short* output) noexcept {
  Combine(input, frames, inputChannels, selected, output, Clip);
}

void MixAverage(const short* input, std::size_t frames, int inputChannels,
                std::span<const int> selected, short* output) noexcept {
  const std::size_t count = selected.size();
  if (count <= 1) {
    Combine(input, frames, inputChannels, selected, output, ClipQuotient);
  } else if (count == 2) {
    // Adding the sign bit before the shift truncates towards zero.
    Combine(input, frames, inputChannels, selected, output, [](std::int32_t sum) {
      return ClipQuotient((sum + static_cast<std::int32_t>(static_cast<Sum>(sum) >> 31)) >> 1);
    });
  } else if (count <= kFloatDivisionLimit) {
    const auto divisor = static_cast<float>(count);
    Combine(input, frames, inputChannels, selected, output, [divisor](std::int32_t sum) {
      return ClipQuotient(static_cast<std::int32_t>(static_cast<float>(sum) / divisor));
    });
  } else {
    const auto divisor = static_cast<std::int32_t>(count);
    Combine(input, frames, inputChannels, selected, output,
            [divisor](std::int32_t sum) { return Clip(sum / divisor); });
  }
}

void MixSeparate(const short* input, std::size_t frames, int inputChannels,
                 std::span<const int> selected, short* output) noexcept {
  const auto stride = static_cast<std::size_t>(inputChannels);
  const std::size_t count = selected.size();
  for (std::size_t s = 0; s < count; ++s) {
    const short* sample = input + selected[s];
    for (std::size_t f = 0; f < frames; ++f, sample += stride) output[f * count + s] = *sample;
  }
}

}  // namespace Quorvex
