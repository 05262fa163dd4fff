// Streams over _wsopen and _fdopen. The lock covers one byte that no file is long enough to have,
// so that it stops nobody from reading or writing.
#include "platform/shared_stream.h"

#include <fcntl.h>
#include <io.h>
#include <share.h>
#include <sys/stat.h>

#include <cerrno>

#include "platform/win32/error_mode_guard.h"
#include "platform/win32/windows_api.h"

namespace Quorvex::platform {
namespace {

StreamOpening Open(const wchar_t* path, int flags, std::FILE*& stream) {
  const ErrorModeGuard guard;
  stream = nullptr;
  const int descriptor =
      ::_wsopen(path, flags | _O_BINARY | _O_NOINHERIT, _SH_DENYNO, _S_IREAD | _S_IWRITE);
  if (descriptor < 0) {
    if (errno == ENOENT) return StreamOpening::kMissing;
    return errno == EEXIST ? StreamOpening::kExists : StreamOpening::kFailed;
  }
  stream = ::_fdopen(descriptor, (flags & _O_RDWR) != 0 ? "r+b" : "rb");
  if (stream != nullptr) return StreamOpening::kOpened;
  ::_close(descriptor);
  return StreamOpening::kFailed;
}

HANDLE HandleOf(std::FILE* stream) {
  return reinterpret_cast<HANDLE>(::_get_osfhandle(::_fileno(stream)));
}

OVERLAPPED LockedByte() {
  OVERLAPPED at{};
  at.Offset = 0xFFFFFFFF;
  at.OffsetHigh = 0x7FFFFFFF;
  return at;
}

}  // namespace

StreamOpening OpenSharedStream(const wchar_t* path, std::FILE*& stream) {
  return Open(path, _O_RDWR, stream);
}

StreamOpening CreateSharedStream(const wchar_t* path, std::FILE*& stream) {
  return Open(path, _O_RDWR | _O_CREAT | _O_EXCL, stream);
}

std::FILE* OpenRegularStream(const wchar_t* path, bool write) {
  std::FILE* stream = nullptr;
  if (Open(path, write ? _O_RDWR : _O_RDONLY, stream) != StreamOpening::kOpened) return nullptr;
  if (::GetFileType(HandleOf(stream)) == FILE_TYPE_DISK) return stream;
  std::fclose(stream);
  return nullptr;
}

bool SeekTo(std::FILE* stream, std::int64_t position) noexcept {
  return ::_fseeki64(stream, position, SEEK_SET) == 0;
}

bool SeekToEnd(std::FILE* stream, std::int64_t& position) noexcept {
  if (::_fseeki64(stream, 0, SEEK_END) != 0) return false;
  position = ::_ftelli64(stream);
  return position >= 0;
}

void CutAt(std::FILE* stream, std::int64_t position) noexcept {
  ::_chsize_s(::_fileno(stream), position);
}

bool TryLock(std::FILE* stream) noexcept {
  OVERLAPPED at = LockedByte();
  if (::LockFileEx(HandleOf(stream), LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0,
                   &at) != 0) {
    return true;
  }
  const DWORD error = ::GetLastError();
  return error != ERROR_LOCK_VIOLATION && error != ERROR_IO_PENDING;
}

void Unlock(std::FILE* stream) noexcept {
  OVERLAPPED at = LockedByte();
  ::UnlockFileEx(HandleOf(stream), 0, 1, 0, &at);
}

}  // namespace Quorvex::platform
