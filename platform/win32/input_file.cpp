// A regular file over CreateFileW and ReadFile at an offset.
#include "platform/input_file.h"

#include <algorithm>

#include "platform/win32/error_mode_guard.h"
#include "platform/win32/windows_api.h"

namespace Quorvex::platform {
namespace {

constexpr std::size_t kLongestRead = 1U << 30;  // the system counts bytes in 32 bits

HANDLE HandleOf(std::intptr_t handle) { return reinterpret_cast<HANDLE>(handle); }

}  // namespace

bool InputFile::Open(const wchar_t* path) {
  Close();
  const ErrorModeGuard guard;
  // Others may go on writing, renaming and deleting what is being read here. No client of a pipe
  // that somebody laid out gets to act for its user (SECURITY_IDENTIFICATION).
  const HANDLE handle = ::CreateFileW(
      path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL | SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION,
      nullptr);
  if (handle == INVALID_HANDLE_VALUE) return false;
  LARGE_INTEGER size{};
  if (::GetFileType(handle) != FILE_TYPE_DISK || ::GetFileSizeEx(handle, &size) == 0) {
    ::CloseHandle(handle);
    return false;
  }
  handle_ = reinterpret_cast<std::intptr_t>(handle);
  size_ = static_cast<std::uint64_t>(size.QuadPart);
  return true;
}

void InputFile::Close() noexcept {
  if (handle_ != kClosed) ::CloseHandle(HandleOf(handle_));
  handle_ = kClosed;
  size_ = 0;
}

bool InputFile::IsOpen() const noexcept { return handle_ != kClosed; }

bool InputFile::ReadAt(std::uint64_t offset, void* buffer, std::size_t count,
                       std::size_t& got) noexcept {
  got = 0;
  const ErrorModeGuard guard;
  while (got < count) {
    const std::uint64_t position = offset + got;
    OVERLAPPED at{};
    at.Offset = static_cast<DWORD>(position);
    at.OffsetHigh = static_cast<DWORD>(position >> 32);
    DWORD read = 0;
    if (::ReadFile(HandleOf(handle_), static_cast<char*>(buffer) + got,
                   static_cast<DWORD>(std::min(count - got, kLongestRead)), &read, &at) == 0) {
      return ::GetLastError() == ERROR_HANDLE_EOF;
    }
    if (read == 0) return true;
    got += read;
  }
  return true;
}

}  // namespace Quorvex::platform
