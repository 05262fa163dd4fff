// FileStream: an input stream over an open file.
#pragma once

#include <algorithm>
#include <cstdint>
#include <istream>
#include <memory>
#include <new>
#include <streambuf>

#include "platform/ft_file_impl.h"

namespace Quorvex::platform {

/// Reads through a file, whose position it moves, a buffer at a time. What the file throws is a
/// failed read to the stream's own operations (badbit).
class FileStream final : public std::istream {
 public:
  /// @param file  not owned; open, and outlives the stream.
  explicit FileStream(CFTFileImpl& file) : std::istream(nullptr), buffer_(file) { rdbuf(&buffer_); }

  /// Null when there is no memory.
  static std::unique_ptr<FileStream> Make(CFTFileImpl& file) noexcept try {
    return std::make_unique<FileStream>(file);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }

 private:
  class Buffer final : public std::streambuf {
   public:
    explicit Buffer(CFTFileImpl& file) : file_(file) {}

   protected:
    int_type underflow() override {
      const std::int64_t left = file_.GetSize() - file_.Tell();
      if (left <= 0) return traits_type::eof();
      const auto count = static_cast<std::uint32_t>(std::min<std::int64_t>(left, kSize));
      file_.Read(reinterpret_cast<std::uint8_t*>(bytes_), count);
      setg(bytes_, bytes_, bytes_ + count);
      return traits_type::to_int_type(bytes_[0]);
    }

    pos_type seekoff(off_type offset, std::ios::seekdir from, std::ios::openmode) override {
      const std::int64_t start = from == std::ios::beg   ? 0
                                 : from == std::ios::end ? file_.GetSize()
                                                         : file_.Tell() - (egptr() - gptr());
      if (offset < -start) return pos_type(off_type(-1));
      if (offset != 0 || from != std::ios::cur) {
        file_.Seek(start + offset);
        setg(nullptr, nullptr, nullptr);
      }
      return pos_type(start + offset);
    }

    pos_type seekpos(pos_type position, std::ios::openmode mode) override {
      return seekoff(off_type(position), std::ios::beg, mode);
    }

   private:
    static constexpr std::uint32_t kSize = 4096;

    CFTFileImpl& file_;
    char bytes_[kSize];
  };

  Buffer buffer_;
};

}  // namespace Quorvex::platform
