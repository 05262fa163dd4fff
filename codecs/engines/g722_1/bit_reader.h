// The bits of one coded frame, most significant first.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "codecs/engines/g722_1/frame.h"

namespace Quorvex::g722_1 {

/// Reading past the end gives zeros; Left() then is negative.
class BitReader {
 public:
  explicit BitReader(std::span<const unsigned char> frame) noexcept {
    const std::size_t bytes = std::min<std::size_t>(frame.size(), kMostFrameBytes);
    std::copy_n(frame.begin(), bytes, bytes_.begin());
    end_ = static_cast<int>(bytes) * 8;
  }

  /// The next bits, the first on top; at least 25 of the 32 are of the frame.
  std::uint32_t Ahead() const noexcept {
    const auto first = static_cast<std::size_t>(std::min(position_ / 8, kMostFrameBytes));
    const std::uint32_t word = std::uint32_t{bytes_[first]} << 24 |
                               std::uint32_t{bytes_[first + 1]} << 16 |
                               std::uint32_t{bytes_[first + 2]} << 8 | bytes_[first + 3];
    return word << (position_ & 7);
  }
  void Skip(int bits) noexcept { position_ += bits; }

  /// @param bits  1 to 25
  std::uint32_t Read(int bits) noexcept {
    const std::uint32_t value = Ahead() >> (32 - bits);
    Skip(bits);
    return value;
  }

  int Left() const noexcept { return end_ - position_; }

 private:
  std::array<unsigned char, kMostFrameBytes + 4> bytes_{};
  int end_ = 0;
  int position_ = 0;
};

}  // namespace Quorvex::g722_1
