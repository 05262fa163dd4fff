// HeaderReader: the bytes of a file's header, fetched a page at a time.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

#include "platform/input_file.h"

namespace Quorvex {

/// Random access to small pieces of a file or of memory. Header parsers take one, so that they can
/// be tried on bytes without a file.
class HeaderReader {
 public:
  /// Reads from an open file, which must outlive this object.
  explicit HeaderReader(platform::InputFile& file) : file_(&file), size_(file.Size()) {}
  /// Reads from memory, which must outlive this object.
  explicit HeaderReader(std::span<const unsigned char> bytes)
      : window_(bytes), size_(bytes.size()) {}

  /// Size of the whole file in bytes.
  std::uint64_t Size() const noexcept { return size_; }

  /// Reads exactly `count` bytes, at most kLargestRead. False at the end of the file or on a read
  /// error.
  bool Read(std::uint64_t offset, void* bytes, std::size_t count) noexcept;

  static constexpr std::size_t kLargestRead = 256;

 private:
  static constexpr std::size_t kWindowSize = 4096;

  bool WindowHolds(std::uint64_t offset, std::size_t count) const noexcept;

  platform::InputFile* file_ = nullptr;  // null: the window is all there is
  std::array<unsigned char, kWindowSize> buffer_;
  std::span<const unsigned char> window_;
  std::uint64_t windowOffset_ = 0;
  std::uint64_t size_;
};

/// The most chunks of a RIFF file that are walked through. This library's own limit: a sparse file
/// of gigabytes may consist of empty ones.
inline constexpr int kMostRIFFChunks = 100'000;

/// Whether the id of a chunk is `id`, of as many characters.
inline bool IsId(const unsigned char* bytes, std::string_view id) noexcept {
  return std::memcmp(bytes, id.data(), id.size()) == 0;
}

/// Fields of a header.
inline std::uint32_t LittleEndian16(const unsigned char* bytes) noexcept {
  return bytes[0] | static_cast<std::uint32_t>(bytes[1]) << 8;
}
inline std::uint32_t LittleEndian32(const unsigned char* bytes) noexcept {
  return LittleEndian16(bytes) | LittleEndian16(bytes + 2) << 16;
}
inline std::uint32_t BigEndian32(const unsigned char* bytes) noexcept {
  return static_cast<std::uint32_t>(bytes[0]) << 24 | static_cast<std::uint32_t>(bytes[1]) << 16 |
         static_cast<std::uint32_t>(bytes[2]) << 8 | bytes[3];
}

}  // namespace Quorvex
