// CFTFileImpl: an unbuffered file, as CFTFile and the writers use it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>

namespace Quorvex::platform {

/// One file of the system. Every failure is thrown as a bare QVERRORCODE_TAG; what cannot be read
/// or written as a whole is a failure. One thread at a time. Operations other than Create, Open and
/// Delete need an open file and throw their own code without one. The order of the virtual
/// operations, slots 0 to 12, is fixed.
///
///     Open      QVERR_FILE_NOT_FOUND    the directory is there, the file is not
///               QVERR_PATH_NOT_FOUND    a directory of the path is not there
///               QVERR_ACCESS_DENIED     refused, with `write`
///               QVERR_FILE_OPEN_FAILED  anything else: refused without `write`, not a regular file
///     Create    QVERR_ACCESS_DENIED     refused
///               QVERR_FILE_CREATE_FAILED  anything else, a missing directory too
///     Delete    QVERR_FILE_NOT_FOUND, QVERR_PATH_NOT_FOUND as for Open
///               QVERR_FILE_WRITE_FAILED anything else
///     Write     QVERR_FILE_WRITE_FAILED
///     Close     QVERR_FILE_WRITE_FAILED when the system reports only now that data was lost
///     the rest  QVERR_FILE_IO
///
/// On Windows nobody else may write to a file while it is open here, and opening one that somebody
/// writes to is QVERR_FILE_OPEN_FAILED. Linux knows no such rule.
class CFTFileImpl {
 public:
  /// Closes the file. A derived class calls its Close here.
  virtual ~CFTFileImpl() = default;

  virtual bool IsOpen() const noexcept = 0;
  /// Creates or truncates a file for reading and writing. Closes an open one first, as Open does.
  virtual void Create(const wchar_t* name) = 0;
  /// Opens an existing file for reading and, with `write`, for writing.
  virtual void Open(const wchar_t* name, bool write) = 0;
  /// Closes the file and the stream, if there is one. The object is closed also when this throws.
  virtual void Close() = 0;
  /// Deletes a file by name. Has nothing to do with the open file.
  virtual void Delete(const wchar_t* name) = 0;
  /// Moves to a position, in bytes from the start. It may lie beyond the end.
  virtual void Seek(std::int64_t offset) = 0;
  virtual std::int64_t Tell() = 0;
  /// In bytes.
  virtual std::int64_t GetSize() = 0;
  /// Time of the last write, in seconds. The fields of the UTC time are taken for local time, which
  /// is wanted: the value differs from the calendar time by the local offset from UTC. Remembered
  /// until the next Write.
  virtual std::int64_t GetModificationTime() = 0;
  /// A binary input stream over the same open file, moving its position; always the same one. It
  /// reads ahead: seek it after any other operation, and the other way round. The object keeps it
  /// until Close. Null when there is no memory or nothing is open.
  virtual std::istream* GetStream() = 0;
  /// Writes exactly so many bytes at the position.
  virtual void Write(const std::uint8_t* data, std::uint32_t count) = 0;
  /// Reads exactly so many bytes at the position.
  virtual void Read(std::uint8_t* data, std::uint32_t count) = 0;

  // Objects come from the calling thread's current allocator, or are null, and go back to where
  // they came from. Both are defined above this layer, where allocators are known:
  // support/ft_file.cpp.
  static void* operator new(std::size_t bytes) noexcept;
  static void operator delete(void* memory) noexcept;

  CFTFileImpl(const CFTFileImpl&) = delete;
  CFTFileImpl& operator=(const CFTFileImpl&) = delete;

 protected:
  CFTFileImpl() = default;
};

/// A new, closed file of this system; null when there is no memory.
CFTFileImpl* CreateFTFileImpl() noexcept;

}  // namespace Quorvex::platform
