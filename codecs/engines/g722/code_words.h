// The code words of a frame: two bits of the higher band above the bits of the lower one, packed
// without gaps, the first word in the lowest bits.
//
//     8 bits   one word a byte
//     7 bits   1111111 0 | 222222 11 | ...      (word numbers, the lowest bit at the right)
#pragma once

#include <cstddef>

namespace Quorvex::g722 {

/// @param bits  of a code word, 6 to 8.
inline void UnpackCodeWords(const unsigned char* bytes, int bits, std::size_t count,
                            unsigned char* words) noexcept {
  unsigned buffer = 0;
  int held = 0;
  for (std::size_t i = 0; i < count; ++i) {
    if (held < bits) {
      buffer |= static_cast<unsigned>(*bytes++) << held;
      held += 8;
    }
    words[i] = static_cast<unsigned char>(buffer & ((1U << bits) - 1));
    buffer >>= bits;
    held -= bits;
  }
}

/// @param count  such that the words fill whole bytes.
inline void PackCodeWords(const unsigned char* words, int bits, std::size_t count,
                          unsigned char* bytes) noexcept {
  unsigned buffer = 0;
  int held = 0;
  for (std::size_t i = 0; i < count; ++i) {
    buffer |= static_cast<unsigned>(words[i]) << held;
    held += bits;
    if (held >= 8) {
      *bytes++ = static_cast<unsigned char>(buffer);
      buffer >>= 8;
      held -= 8;
    }
  }
}

}  // namespace Quorvex::g722
