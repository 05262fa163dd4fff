// One window of the file stands in memory; a read outside it moves the window.
#include "support/header_reader.h"

#include <cstring>

namespace Quorvex {

bool HeaderReader::WindowHolds(std::uint64_t offset, std::size_t count) const noexcept {
  if (offset < windowOffset_) return false;
  const std::uint64_t from = offset - windowOffset_;
  return from <= window_.size() && window_.size() - from >= count;
}

bool HeaderReader::Read(std::uint64_t offset, void* bytes, std::size_t count) noexcept {
  if (count > kLargestRead) return false;
  if (!WindowHolds(offset, count)) {
    std::size_t got = 0;
    if (file_ == nullptr || !file_->ReadAt(offset, buffer_.data(), buffer_.size(), got))
      return false;
    window_ = {buffer_.data(), got};
    windowOffset_ = offset;
    if (got < count) return false;
  }
  std::memcpy(bytes, window_.data() + (offset - windowOffset_), count);
  return true;
}

}  // namespace Quorvex
