// The two low bits of a frame's first byte tell how long it is: 24, 20, 4 or 1 bytes.
#include "formats/aud/mixed_frames.h"

#include <algorithm>

namespace Quorvex {
namespace {

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
  const std::uint64_t inFile = reader.Size() - std::min(reader.Size(), offset);
  const std::uint64_t counted = std::min({bytes, inFile, kMostCountedMixedBytes});
  unsigned char piece[HeaderReader::kLargestRead];
  std::uint64_t samples = 0;
  std::uint64_t position = 0;  // of a frame
  std::size_t length = 0;      // of the one before
  while (position < counted) {
    const auto size =
        static_cast<std::size_t>(std::min<std::uint64_t>(counted - position, sizeof piece));
    if (!reader.Read(offset + position, piece, size)) break;
    std::size_t next = 0;
    for (; next < size; next += length) {
      length = MixedFrameBytes(piece[next]);
      samples += kMixedFrameSamples;
    }
    position += next;
  }
  if (position > bytes) return samples - SamplesOf(position - bytes, length);
  return samples + SamplesOf(bytes - position, g723_1::kMostFrameBytes);
}

}  // namespace Quorvex
