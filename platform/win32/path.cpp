// Path syntax of Windows.
#include "platform/path.h"

#include "platform/win32/error_mode_guard.h"
#include "platform/win32/windows_api.h"

namespace Quorvex::platform {

bool IsPathSeparator(wchar_t character) noexcept { return character == L'\\'; }

bool ResolvePath(const std::wstring& name, std::wstring& full) {
  if (name.empty()) return false;
  if (name.starts_with(L"\\\\") || (name.size() > 1 && name[1] == L':')) {
    full = name;
    return true;
  }
  const DWORD capacity = ::GetFullPathNameW(name.c_str(), 0, nullptr, nullptr);
  std::wstring resolved(capacity, L'\0');
  const DWORD length = ::GetFullPathNameW(name.c_str(), capacity, resolved.data(), nullptr);
  if (length == 0 || length >= capacity) return false;
  resolved.resize(length);
  full = std::move(resolved);
  return true;
}

bool Exists(const wchar_t* path) {
  const ErrorModeGuard guard;
  return ::GetFileAttributesW(path) != INVALID_FILE_ATTRIBUTES;
}

}  // namespace Quorvex::platform
