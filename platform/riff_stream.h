// RiffStream: multimedia I/O, that is, files made of chunks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace Quorvex::platform {

/// Four characters as they stand in a file.
constexpr std::uint32_t FourCC(const char (&text)[5]) noexcept {
  std::uint32_t code = 0;
  for (int i = 3; i >= 0; --i) code = code << 8 | static_cast<unsigned char>(text[i]);
  return code;
}
inline constexpr std::uint32_t kRiffId = FourCC("RIFF");
inline constexpr std::uint32_t kListId = FourCC("LIST");

/// A chunk. Its data is followed by a pad byte when the size is odd.
struct RiffChunk {
  std::uint32_t id = 0;
  std::uint32_t size = 0;    // of the data, in bytes: what the file says, which may be anything
  std::uint32_t type = 0;    // of the contents of a RIFF or LIST chunk: the first four data bytes
  std::uint64_t offset = 0;  // of the data in the file
};

/// A RIFF file, open for reading or for writing, with a position. On Windows it is mmio, whose
/// offsets have 31 bits; elsewhere they have as many as the file. A file that lies about sizes ends
/// earlier, nothing worse. Below Close, everything needs an open stream: Read and Seek one that is
/// being read, Write and CreateChunk one that is being written. One thread at a time.
class RiffStream {
 public:
  RiffStream() noexcept;
  /// Closes.
  ~RiffStream();
  RiffStream(const RiffStream&) = delete;
  RiffStream& operator=(const RiffStream&) = delete;

  /// Opens a regular file for reading, never waiting for another process. Where the system knows
  /// such a rule, nobody may write to it meanwhile. False when that fails; the object is closed
  /// first. May throw std::bad_alloc, as Create may.
  bool Open(const wchar_t* path);
  /// Creates or truncates a regular file for writing, for this stream alone where the system knows
  /// such a rule.
  bool Create(const wchar_t* path);
  /// False when something written is lost. The object is closed all the same.
  bool Close() noexcept;
  bool IsOpen() const noexcept { return state_ != nullptr; }

  /// Reads the header of the chunk at the position and moves to its data; behind the type of a RIFF
  /// or LIST chunk.
  /// @param parent  a chunk that was descended into: nothing behind its end is a chunk. Null: the
  ///                file itself.
  /// @return false when no whole header is left there.
  bool Descend(RiffChunk& chunk, const RiffChunk* parent) noexcept;

  /// Reading: moves behind a chunk and its pad byte, or to the end of the file if that is earlier.
  /// Writing: ends a chunk at the position: adds the pad byte, goes back to write the size, and
  /// moves behind the chunk.
  bool Ascend(const RiffChunk& chunk) noexcept;

  /// Begins a chunk at the position, without a size, and moves to its data.
  /// @param chunk  its id and, for RIFF and LIST, its type are taken, its offset is set.
  bool CreateChunk(RiffChunk& chunk) noexcept;

  /// Reads up to `count` bytes. @param got  fewer than that only at the end of the file or on
  /// failure. @return false on a read error; the end of the file is none.
  bool Read(void* buffer, std::size_t count, std::size_t& got) noexcept;

  /// Writes exactly `count` bytes. False also when the file would outgrow the offsets of a RIFF
  /// file, which have 32 bits, or those of the system.
  bool Write(const void* data, std::size_t count) noexcept;

  /// Moves to a position of a file that is being read; it may lie behind the end.
  bool Seek(std::uint64_t offset) noexcept;
  std::uint64_t Position() const noexcept;

 private:
  struct State;
  std::unique_ptr<State> state_;  // null: closed
};

}  // namespace Quorvex::platform
