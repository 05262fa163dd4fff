// The buffer is a window on the file, moved in steps of 5 MiB and never sought:
//
//     file    |---------------|######################|--------------|
//             0               bufferOffset_          + valid_       size_
//     buffer                  |##########^###########|00 to a multiple of 16
//                                        cursor_
//
// bufferOffset_ + cursor_ is the position. A window that is used up is written back when it was
// changed, and the next one begins behind it.
#include "support/ft_file.h"

#include <MediaAccessor/result_code.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include "platform/path.h"

namespace Quorvex {
namespace {

constexpr std::uint64_t kUnknownPosition = ~std::uint64_t{0};

}  // namespace

void* platform::CFTFileImpl::operator new(std::size_t bytes) noexcept {
  return AllocatedObject::operator new(bytes);
}

void platform::CFTFileImpl::operator delete(void* memory) noexcept {
  AllocatedObject::operator delete(memory);
}

// An implementation that calls back into its file finds it busy.
class CFTFile::BusyScope {
 public:
  explicit BusyScope(CFTFile& file) : file_(file) {
    if (file_.busy_) throw QVERR_BAD_STATE;
    file_.busy_ = true;
  }
  ~BusyScope() { file_.busy_ = false; }
  BusyScope(const BusyScope&) = delete;
  BusyScope& operator=(const BusyScope&) = delete;

 private:
  CFTFile& file_;
};

CFTFile::~CFTFile() { Reset(); }

void CFTFile::Open(const std::wstring& name, bool write) try {
  if (IsOpen()) throw QVERR_BAD_STATE;
  std::wstring fullName;
  if (!platform::ResolvePath(name, fullName)) throw QVERR_BAD_FILE_NAME;
  std::unique_ptr<CFTFileImpl> impl(factory_());
  if (impl == nullptr) throw QVERR_CREATE_FAILED;
  Allocator& allocator = CurrentAllocator();
  Buffer buffer(static_cast<std::uint8_t*>(allocator.Allocate(kBufferSize)),
                BufferDeleter{&allocator});
  if (buffer == nullptr) throw QVERR_CREATE_FAILED;
  impl->Open(fullName.c_str(), write);
  const std::int64_t size = impl->GetSize();
  if (size < 0) throw QVERR_FILE_IO;
  // Everything else is as Reset leaves it; nothing below fails.
  impl_ = std::move(impl);
  buffer_ = std::move(buffer);
  name_ = std::move(fullName);
  size_ = static_cast<std::uint64_t>(size);
  write_ = write;
} catch (const std::bad_alloc&) {
  throw QVERR_CREATE_FAILED;
}

void CFTFile::Read(std::uint8_t* dest, std::uint32_t count) {
  RequireTransfer(dest, count);
  if (!Holds(count)) throw QVERR_READ_PAST_END;
  WalkBuffer(count, [&dest](const std::uint8_t* buffered, std::uint32_t bytes) {
    std::memcpy(dest, buffered, bytes);
    dest += bytes;
  });
}

void CFTFile::Write(const std::uint8_t* data, std::uint32_t count) {
  RequireTransfer(data, count);
  if (!write_) throw QVERR_BAD_STATE;
  if (!Holds(count)) throw QVERR_FILE_WRITE_FAILED;
  WalkBuffer(count, [this, &data](std::uint8_t* buffered, std::uint32_t bytes) {
    std::memcpy(buffered, data, bytes);
    data += bytes;
    dirty_ = true;
  });
}

void CFTFile::RequireTransfer(const void* memory, std::uint32_t count) const {
  const bool possible =
      impl_ != nullptr && impl_->IsOpen() && !busy_ && memory != nullptr && count != 0;
  if (!possible) throw QVERR_BAD_STATE;
}

bool CFTFile::Holds(std::uint32_t count) const noexcept {
  const std::uint64_t position = bufferOffset_ + cursor_;
  return position <= size_ && size_ - position >= count;
}

// Hands the next `count` bytes to `piece`, as they stand in one buffer after the other.
template <class Piece>
void CFTFile::WalkBuffer(std::uint32_t count, const Piece& piece) {
  const BusyScope busy(*this);
  while (count > 0) {
    // A window is left as soon as it is used up; after a write that failed there, on the next call.
    if (cursor_ < valid_ || valid_ == 0) {
      if (valid_ == 0) Fill();
      const std::uint32_t bytes = std::min(count, valid_ - cursor_);
      piece(buffer_.get() + cursor_, bytes);
      cursor_ += bytes;
      count -= bytes;
    }
    if (cursor_ == valid_) {
      WriteBack();
      bufferOffset_ += valid_;
      valid_ = 0;
      cursor_ = 0;
    }
  }
}

void CFTFile::Fill() {
  SeekToBuffer();
  if (bufferOffset_ > size_) throw QVERR_BAD_STATE;
  const auto bytes =
      static_cast<std::uint32_t>(std::min<std::uint64_t>(size_ - bufferOffset_, kBufferSize));
  implPosition_ = kUnknownPosition;
  impl_->Read(buffer_.get(), bytes);
  implPosition_ = bufferOffset_ + bytes;
  const std::uint32_t padded = (bytes + kBlockSize - 1) / kBlockSize * kBlockSize;
  std::memset(buffer_.get() + bytes, 0, padded - bytes);
  valid_ = padded;
  dirty_ = false;
}

void CFTFile::Flush() {
  const BusyScope busy(*this);
  WriteBack();
}

void CFTFile::WriteBack() {
  if (!dirty_) return;
  SeekToBuffer();
  implPosition_ = kUnknownPosition;
  impl_->Write(buffer_.get(), valid_);
  implPosition_ = bufferOffset_ + valid_;
  // With the padding, which is in the buffer already, the file may have grown.
  size_ = std::max(size_, implPosition_);
  dirty_ = false;
}

// A position that a failed transfer left is not known, so it is always set anew.
void CFTFile::SeekToBuffer() {
  if (implPosition_ == bufferOffset_) return;
  implPosition_ = kUnknownPosition;
  impl_->Seek(static_cast<std::int64_t>(bufferOffset_));
  implPosition_ = bufferOffset_;
}

void CFTFile::Close(bool discard) {
  if (!IsOpen()) return;
  if (busy_) throw QVERR_BAD_STATE;
  if (!discard) Flush();
  const std::unique_ptr<CFTFileImpl> impl = std::move(impl_);
  Reset();
  if (impl->IsOpen()) impl->Close();
}

void CFTFile::Reset() noexcept {
  impl_.reset();
  name_.clear();
  protectedBegin_ = kNoMark;
  protectedEnd_ = kNoMark;
  size_ = 0;
  implPosition_ = 0;
  write_ = false;
  dirty_ = false;
  valid_ = 0;
  cursor_ = 0;
  bufferOffset_ = 0;
  buffer_.reset();
  busy_ = false;
}

std::uint64_t CFTFile::GetSize() const {
  if (!IsOpen()) throw QVERR_BAD_STATE;
  return size_;
}

void CFTFile::Delete(const std::wstring& name, ImplFactory factory) try {
  if (name.empty()) throw QVERR_BAD_FILE_NAME;
  const std::unique_ptr<CFTFileImpl> impl(factory());
  if (impl == nullptr) throw QVERR_CREATE_FAILED;
  impl->Delete(name.c_str());
} catch (const std::bad_alloc&) {
  throw QVERR_CREATE_FAILED;
}

}  // namespace Quorvex
