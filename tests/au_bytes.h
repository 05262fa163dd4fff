// AU files as bytes, with one thing wrong at a time.
#pragma once

#include <cstdint>
#include <string>

#include "tests/test_files.h"

namespace tests {

inline std::string BigEndian(std::uint64_t value, int bytes) {
  std::string text;
  for (int i = bytes - 1; i >= 0; --i) text += static_cast<char>(value >> (8 * i) & 0xFF);
  return text;
}

/// An AU file whose fields can be set to anything.
struct AuBytes {
  std::uint32_t magic = 0x2E736E64;
  std::uint32_t dataOffset = 24;
  std::uint32_t dataSize = 0xFFFFFFFF;
  std::uint32_t encoding = 3;
  std::uint32_t rate = 8000;
  std::uint32_t channels = 1;
  std::string annotation;
  std::string data = std::string(16, '\0');

  Bytes ToBytes() const {
    std::string text;
    for (const std::uint32_t field : {magic, dataOffset, dataSize, encoding, rate, channels}) {
      text += BigEndian(field, 4);
    }
    text += annotation + data;
    return Bytes(text.begin(), text.end());
  }
};

}  // namespace tests
