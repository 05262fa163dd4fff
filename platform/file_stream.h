// FileStream: an input stream over a file that is open already.
#pragma once

#include <ext/stdio_filebuf.h>

#include <istream>
#include <memory>
#include <new>

namespace Quorvex::platform {

/// Owns the descriptor that it is made over. One thread at a time.
class FileStream final : public std::istream {
 public:
  /// Null when there is no memory or the descriptor is none; then the descriptor stays the
  /// caller's.
  static std::unique_ptr<FileStream> Make(int descriptor) noexcept try {
    auto stream = std::make_unique<FileStream>(descriptor);
    return stream->buffer_.is_open() ? std::move(stream) : nullptr;
  } catch (const std::bad_alloc&) {
    return nullptr;
  }

  explicit FileStream(int descriptor)
      : std::istream(nullptr), buffer_(descriptor, std::ios::in | std::ios::binary) {
    rdbuf(&buffer_);
  }

  /// Closes the descriptor. False, with the failure state set, when the system reports an error.
  bool Close() {
    if (buffer_.close() == nullptr) setstate(std::ios::failbit);
    return !fail();
  }

 private:
  __gnu_cxx::stdio_filebuf<char> buffer_;
};

}  // namespace Quorvex::platform
