// CFTFile: a file read and written through one large buffer.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/ft_file_impl.h"
#include "support/allocator.h"

namespace Quorvex {

using platform::CFTFileImpl;

/// An existing file, read from its start to its end, and written over in place. Every failure is
/// thrown as a bare QVERRORCODE_TAG. One thread at a time.
///
///     closed  --Open-->  open  --Close-->  closed, again and again; a failed Open leaves it closed
///
/// Writing back the buffer that holds the end of the file appends zero bytes up to a 16-byte
/// boundary. That is wanted.
///
/// After a QVERR_FILE_IO or QVERR_FILE_WRITE_FAILED the file stays open, at the position that was
/// reached. Changes that could not be written are still in the buffer: Flush tries again, a Close
/// with `discard` drops them.
class CFTFile {
 public:
  using ImplFactory = CFTFileImpl* (*)();

  static constexpr std::uint32_t kBufferSize = 5 * 1024 * 1024;
  static constexpr std::uint32_t kBlockSize = 16;
  static constexpr std::uint64_t kNoMark = ~std::uint64_t{0};

  /// @param factory  makes the system's file; another one serves tests.
  explicit CFTFile(ImplFactory factory = &platform::CreateFTFileImpl) noexcept
      : factory_(factory) {}
  /// Closes without writing what is in the buffer.
  ~CFTFile();
  CFTFile(const CFTFile&) = delete;
  CFTFile& operator=(const CFTFile&) = delete;

  /// Opens an existing file. Its buffer comes from the thread's current allocator.
  /// @param name   a relative one is resolved against the working directory.
  /// @param write  whether it may be written to.
  /// Throws QVERR_BAD_STATE when a file is open, which stays open; QVERR_BAD_FILE_NAME for an empty
  /// or unresolvable name; QVERR_CREATE_FAILED without memory; what CFTFileImpl::Open and GetSize
  /// throw.
  void Open(const std::wstring& name, bool write);

  /// Copies the next `count` bytes; never fewer.
  /// Throws QVERR_BAD_STATE unless a file is open and there is something to copy to;
  /// QVERR_READ_PAST_END, with nothing moved, when the file has fewer bytes left; QVERR_FILE_IO.
  /// A buffer with changes is written back before the next one is read: QVERR_FILE_WRITE_FAILED.
  void Read(std::uint8_t* dest, std::uint32_t count);

  /// Writes over the next `count` bytes. The file does not grow: QVERR_FILE_WRITE_FAILED, with
  /// nothing changed, when it has fewer bytes left. QVERR_BAD_STATE as for Read, and when the file
  /// was not opened for writing; otherwise throws what Read does.
  void Write(const std::uint8_t* data, std::uint32_t count);

  /// Writes the changes in the buffer into the file. Nothing to do without any.
  /// Throws QVERR_FILE_IO, QVERR_FILE_WRITE_FAILED; QVERR_BAD_STATE from within another operation.
  void Flush();

  /// Closes the file, if one is open.
  /// @param discard  true: changes that are still in the buffer are dropped.
  /// When the flush throws, the file stays open. What the system's close throws comes after the
  /// object is closed.
  void Close(bool discard);

  /// Size in bytes when the file was opened; grows by the padding of a flush only. Throws
  /// QVERR_BAD_STATE when no file is open.
  std::uint64_t GetSize() const;

  bool IsOpen() const noexcept { return impl_ != nullptr; }
  /// The resolved name; empty when no file is open.
  const std::wstring& GetName() const noexcept { return name_; }
  /// First and last byte of the protected range. There is none: both are kNoMark, always.
  std::uint64_t GetProtectedBegin() const noexcept { return protectedBegin_; }
  std::uint64_t GetProtectedEnd() const noexcept { return protectedEnd_; }

  /// Deletes a file by name. Throws QVERR_BAD_FILE_NAME for an empty one, QVERR_CREATE_FAILED
  /// without memory and what CFTFileImpl::Delete throws.
  static void Delete(const std::wstring& name, ImplFactory factory = &platform::CreateFTFileImpl);

 private:
  struct BufferDeleter {
    Allocator* allocator;
    void operator()(std::uint8_t* memory) const noexcept { allocator->Free(memory); }
  };
  using Buffer = std::unique_ptr<std::uint8_t[], BufferDeleter>;
  class BusyScope;

  void RequireTransfer(const void* memory, std::uint32_t count) const;
  bool Holds(std::uint32_t count) const noexcept;
  template <class Piece>
  void WalkBuffer(std::uint32_t count, const Piece& piece);
  void Fill();
  void WriteBack();
  void SeekToBuffer();
  void Reset() noexcept;

  const ImplFactory factory_;
  std::unique_ptr<CFTFileImpl> impl_;  // null: closed
  std::wstring name_;
  std::uint64_t protectedBegin_ = kNoMark;
  std::uint64_t protectedEnd_ = kNoMark;
  std::uint64_t size_ = 0;
  std::uint64_t implPosition_ = 0;  // as this object left it
  bool write_ = false;
  bool dirty_ = false;
  std::uint32_t valid_ = 0;         // bytes in the buffer, a multiple of 16; 0: empty
  std::uint32_t cursor_ = 0;        // in the buffer
  std::uint64_t bufferOffset_ = 0;  // of its first byte in the file
  Buffer buffer_{nullptr, BufferDeleter{nullptr}};
  bool busy_ = false;
};

}  // namespace Quorvex
