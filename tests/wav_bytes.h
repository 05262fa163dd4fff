// WAV files as bytes, with one thing wrong at a time.
#pragma once

#include <cstdint>
#include <string>

#include "tests/test_files.h"

namespace tests {

/// A canonical WAV file whose fields can be set to anything. Bytes() puts it together.
struct WavBytes {
  std::string riff = "RIFF";
  std::string wave = "WAVE";
  std::string beforeFormat;  // whole chunks
  std::string beforeData;
  std::uint32_t formatSize = 16;
  std::uint32_t tag = 1;
  std::uint32_t channels = 1;
  std::uint32_t frequency = 8000;
  std::int64_t bytesPerSecond = -1;  // negative: the truth
  std::uint32_t blockAlign = 2;
  std::uint32_t bits = 0xFFFF;  // most readers never look at them
  std::string data = std::string(8, '\0');
  std::int64_t dataSize = -1;  // as the header tells it; negative: the truth
  std::string afterData;

  static std::string Number(std::uint64_t value, int bytes) {
    std::string text;
    for (int i = 0; i < bytes; ++i) text += static_cast<char>(value >> (8 * i) & 0xFF);
    return text;
  }

  static std::string Chunk(const std::string& id, const std::string& payload) {
    return id + Number(payload.size(), 4) + payload;
  }

  std::string FormatChunk() const {
    const std::uint64_t rate = bytesPerSecond < 0 ? std::uint64_t{frequency} * blockAlign
                                                  : static_cast<std::uint64_t>(bytesPerSecond);
    std::string payload = Number(tag, 2) + Number(channels, 2) + Number(frequency, 4) +
                          Number(rate, 4) + Number(blockAlign, 2) + Number(bits, 2);
    payload.resize(formatSize, '\0');
    return Chunk("fmt ", payload);
  }

  Bytes ToBytes() const {
    const auto size = dataSize < 0 ? data.size() : static_cast<std::uint64_t>(dataSize);
    const std::string body = wave + beforeFormat + FormatChunk() + beforeData + "data" +
                             Number(size, 4) + data + afterData;
    const std::string text = riff + Number(body.size(), 4) + body;
    return Bytes(text.begin(), text.end());
  }
};

}  // namespace tests
