// The fuzzer's bytes as numbers and stretches, and what a target requires.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <vector>

namespace fuzz {

using Bytes = std::vector<unsigned char>;

inline void Require(bool holds) {
  if (!holds) std::abort();
}

/// Numbers from the beginning of an input; 0 behind its end.
class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : bytes_(data, size) {}

  template <class Number>
  Number Take() {
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < sizeof(Number) && !bytes_.empty(); ++i) {
      number |= static_cast<std::uint32_t>(bytes_.front()) << (8 * i);
      bytes_ = bytes_.subspan(1);
    }
    return static_cast<Number>(number);
  }
  Bytes TakeBytes(std::size_t most) {
    const auto taken = bytes_.first(std::min(most, bytes_.size()));
    bytes_ = bytes_.subspan(taken.size());
    return {taken.begin(), taken.end()};
  }
  std::span<const unsigned char> Rest() const { return bytes_; }

 private:
  std::span<const unsigned char> bytes_;
};

}  // namespace fuzz
