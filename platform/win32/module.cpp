// Modules over the LoadLibraryW family.
#include "platform/module.h"

#include <algorithm>

#include "platform/win32/error_mode_guard.h"
#include "platform/win32/windows_api.h"

namespace Quorvex::platform {
namespace {

constexpr DWORD kLongestOwnPath = 1000;

std::wstring ErrorText(DWORD error) {
  wchar_t text[256] = L"";
  DWORD length =
      ::FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error,
                       0, text, static_cast<DWORD>(std::size(text)), nullptr);
  while (length > 0 && (text[length - 1] == L'\n' || text[length - 1] == L'\r')) --length;
  return std::wstring(text, length) + L" (error " + std::to_wstring(error) + L")";
}

// By its full path, so that nobody can put another in its place.
bool CanLoadSystemModule(const wchar_t* name) {
  wchar_t directory[MAX_PATH + 1];
  const UINT length = ::GetSystemDirectoryW(directory, MAX_PATH);
  if (length == 0 || length > MAX_PATH) return false;
  Module module;
  std::wstring error;
  return module.Load(std::wstring(directory, length) + L"\\" + name, error);
}

}  // namespace

Module::~Module() {
  if (handle_ != nullptr) ::FreeLibrary(static_cast<HMODULE>(handle_));
}

bool Module::Load(const std::wstring& path, std::wstring& error) {
  const bool isFull =
      path.starts_with(L"\\\\") || (path.size() > 2 && path[1] == L':' && path[2] == L'\\');
  if (handle_ != nullptr || !isFull) {
    error = L"not the full path of a module";
    return false;
  }
  const ErrorModeGuard guard;
  handle_ = ::LoadLibraryW(path.c_str());
  if (handle_ == nullptr) error = ErrorText(::GetLastError());
  return handle_ != nullptr;
}

Module::Address Module::FindAddress(const char* name) const noexcept {
  if (handle_ == nullptr) return nullptr;
  return reinterpret_cast<Address>(::GetProcAddress(static_cast<HMODULE>(handle_), name));
}

std::wstring OwnModuleDirectory() {
  HMODULE own = nullptr;
  if (::GetModuleHandleExW(
          GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
          reinterpret_cast<const wchar_t*>(&OwnModuleDirectory), &own) == 0) {
    return {};
  }
  std::wstring path(kLongestOwnPath + 1, L'\0');
  const DWORD length = ::GetModuleFileNameW(own, path.data(), kLongestOwnPath + 1);
  if (length == 0 || length > kLongestOwnPath) return {};
  path.resize(length);
  return path.substr(0, path.find_last_of(L'\\') + 1);
}

std::vector<std::wstring> FindModules(const std::wstring& directory,
                                      std::span<const std::wstring_view> patterns) {
  std::vector<std::wstring> paths;
  const ErrorModeGuard guard;
  for (const std::wstring_view pattern : patterns) {
    const auto first = static_cast<std::ptrdiff_t>(paths.size());
    WIN32_FIND_DATAW found{};
    const std::wstring wanted = directory + std::wstring(pattern) + L".dll";
    const HANDLE search = ::FindFirstFileW(wanted.c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) continue;
    do {
      // The search also looks at short names, by which "x.dll-old" would match.
      const std::wstring name = found.cFileName;
      if (name.size() > 4 && ::lstrcmpiW(name.c_str() + name.size() - 4, L".dll") == 0) {
        paths.push_back(directory + name);
      }
    } while (::FindNextFileW(search, &found) != 0);
    ::FindClose(search);
    std::sort(paths.begin() + first, paths.end());
  }
  return paths;
}

ModuleSearchScope::ModuleSearchScope(const std::wstring& directory) {
  // What the application has set comes back afterwards; nothing is the system's own order.
  const DWORD capacity = ::GetDllDirectoryW(0, nullptr);
  if (capacity > 0) {
    previous_.resize(capacity);
    previous_.resize(::GetDllDirectoryW(capacity, previous_.data()));
  }
  ::SetDllDirectoryW(directory.c_str());
}

ModuleSearchScope::~ModuleSearchScope() {
  ::SetDllDirectoryW(previous_.empty() ? nullptr : previous_.c_str());
}

MediaFrameworks ProbeMediaFrameworks() {
  MediaFrameworks frameworks{.belongToSystem = true};
  frameworks.directShow = CanLoadSystemModule(L"wmvcore.dll");
  frameworks.mediaFoundation = CanLoadSystemModule(L"mf.dll") &&
                               CanLoadSystemModule(L"propsys.dll") &&
                               CanLoadSystemModule(L"mfreadwrite.dll");
  return frameworks;
}

}  // namespace Quorvex::platform
