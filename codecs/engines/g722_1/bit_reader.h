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
    std::array<unsigned char, kMostFrameBytes> bytes{};
    const std::size_t count = std::min(frame.size(), bytes.size());
    std::copy_n(frame.begin(), count, bytes.begin());
    for (std::size_t i = 0; i < kWords; ++i) {
      words_[i] = std::uint32_t{bytes[4 * i]} << 24 | std::uint32_t{bytes[4 * i + 1]} << 16 |
                  std::uint32_t{bytes[4 * i + 2]} << 8 | bytes[4 * i + 3];
    }
    end_ = static_cast<unsigned>(count) * 8;
  }

  /// The next 32 bits, the first on top.
  std::uint32_t Ahead() const noexcept {
    const std::size_t word = std::min<std::size_t>(position_ / 32, kWords);
    const std::uint64_t both = std::uint64_t{words_[word]} << 32 | words_[word + 1];
    return static_cast<std::uint32_t>(both << (position_ % 32) >> 32);
  }
  void Skip(int bits) noexcept { position_ += static_cast<unsigned>(bits); }

  /// @param bits  1 to 32
  std::uint32_t Read(int bits) noexcept {
    const std::uint32_t value = Ahead() >> (32 - bits);
    Skip(bits);
    return value;
  }

  int Left() const noexcept { return static_cast<int>(end_ - position_); }

 private:
  static constexpr std::size_t kWords = kMostFrameBytes / 4;

  std::array<std::uint32_t, kWords + 2> words_{};  // zeros follow the frame
  unsigned end_ = 0;
  unsigned position_ = 0;
};

}  // namespace Quorvex::g722_1
