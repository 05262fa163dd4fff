// The two low bits of a frame's first byte tell how long it is: 24, 20, 4 or 1 bytes.
#include "formats/aud/mixed_frames.h"

#include <algorithm>

namespace Quorvex {
namespace {

// So that no sparse file of terabytes keeps whoever opens it waiting.
constexpr std::uint64_t kMostCountedBytes = std::uint64_t{256} << 20;

// 240 is a multiple of every length.
std::uint64_t SamplesOf(std::uint64_t bytes, std::size_t length) noexcept {
  return bytes * (kMixedFrameSamples / length);
}

}  // namespace

bool MixedFrames::Next(std::span<const unsigned char>& block, MixedFrame& frame) noexcept {
  if (block.empty()) return false;
  const std::size_t length = MixedFrameBytes(carried_ > 0 ? carry_[0] : block.front());
  const std::size_t taken = std::min(length - carried_, block.size());
  const std::size_t bytes = carried_ + taken;
  frame = {.bytes = block.first(taken),
           .samples = static_cast<std::size_t>(SamplesOf(bytes, length))};
  block = block.subspan(taken);
  left_ -= std::min<std::uint64_t>(taken, left_);
  const bool isWhole = bytes == length || left_ == 0;
  if (carried_ == 0 && isWhole) return true;
  std::ranges::copy(frame.bytes, carry_.data() + carried_);
  carried_ = isWhole ? 0 : bytes;
  frame.bytes = {carry_.data(), bytes};
  return isWhole;
}

std::uint64_t CountMixedSamples(HeaderReader& reader, std::uint64_t offset,
                                std::uint64_t bytes) noexcept {
  std::uint64_t samples = 0;
  std::uint64_t position = 0;
  const std::uint64_t counted = std::min(bytes, kMostCountedBytes);
  unsigned char first = 0;
  while (position < counted && reader.Read(offset + position, &first, 1)) {
    const std::size_t length = MixedFrameBytes(first);
    const std::uint64_t taken = std::min<std::uint64_t>(length, bytes - position);
    samples += SamplesOf(taken, length);
    position += taken;
  }
  return samples + SamplesOf(bytes - position, g723_1::kMostFrameBytes);
}

}  // namespace Quorvex
