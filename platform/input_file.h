// Reading a file by position.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Quorvex::platform {

/// A regular file, open for reading. There is no file position: every read names its own, so that
/// no seek can fail. Closed by the destructor. One thread at a time.
class InputFile {
 public:
  InputFile() = default;
  ~InputFile() { Close(); }
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;

  /// Opens a file. False when it cannot be opened or is not a regular file (a directory, a pipe):
  /// this never waits for another process. The object is closed first.
  bool Open(const wchar_t* path);
  void Close() noexcept;
  bool IsOpen() const noexcept;

  /// The size in bytes when the file was opened.
  std::uint64_t Size() const noexcept { return size_; }

  /// Reads up to `count` bytes at `offset`.
  /// @param got  receives the bytes read; fewer than asked for only at the end of the file or on
  ///             failure, where it counts what arrived before.
  /// @return false on a read error; the end of the file is none.
  bool ReadAt(std::uint64_t offset, void* buffer, std::size_t count, std::size_t& got) noexcept;

 private:
  std::intptr_t handle_ = kClosed;
  std::uint64_t size_ = 0;

  static constexpr std::intptr_t kClosed = -1;
};

}  // namespace Quorvex::platform
