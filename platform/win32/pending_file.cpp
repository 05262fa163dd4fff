// PendingFile over CREATE_NEW and MoveFileExW.
#include "platform/pending_file.h"

#include <cstdint>
#include <random>
#include <utility>

#include "platform/win32/error_mode_guard.h"
#include "platform/win32/windows_api.h"

namespace Quorvex::platform {
namespace {

constexpr int kTries = 16;  // for a name that nobody has

QVERRORCODE_TAG CreationCode(DWORD error) {
  if (error == ERROR_PATH_NOT_FOUND) return QVERR_PATH_NOT_FOUND;
  return error == ERROR_ACCESS_DENIED ? QVERR_ACCESS_DENIED : QVERR_FILE_CREATE_FAILED;
}

// The full path of what may become a file's name. Empty when it may not: a device, which the system
// gives a path of its own; one of the streams of a file; a directory's name.
std::wstring FullPath(const wchar_t* path) {
  const DWORD capacity = ::GetFullPathNameW(path, 0, nullptr, nullptr);
  std::wstring full(capacity, L'\0');
  const DWORD length = ::GetFullPathNameW(path, capacity, full.data(), nullptr);
  if (length == 0 || length >= capacity) return {};
  full.resize(length);
  const std::size_t name = full.find_last_of(L'\\') + 1;
  const bool isFile =
      !full.starts_with(L"\\\\.\\") && name < full.size() && full.find(L':', name) == full.npos;
  return isFile ? full : std::wstring();
}

// The path of an open file itself, whatever links lead there.
std::wstring FinalPath(HANDLE file) {
  const DWORD capacity = ::GetFinalPathNameByHandleW(file, nullptr, 0, 0);
  std::wstring path(capacity, L'\0');
  const DWORD length = ::GetFinalPathNameByHandleW(file, path.data(), capacity, 0);
  path.resize(length < capacity ? length : 0);
  return path;
}

// Whether the file that is there may be replaced. A link leads on to what it means.
QVERRORCODE_TAG CheckReplaced(std::wstring& path, DWORD attributes) {
  if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return QVERR_FILE_CREATE_FAILED;
  if ((attributes & FILE_ATTRIBUTE_READONLY) != 0) return QVERR_ACCESS_DENIED;
  // Whoever may write to it may replace it. Somebody may be reading it.
  const HANDLE file = ::CreateFileW(path.c_str(), GENERIC_WRITE,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) {
    return ::GetLastError() == ERROR_ACCESS_DENIED ? QVERR_ACCESS_DENIED : QVERR_FILE_CREATE_FAILED;
  }
  const bool isFile = ::GetFileType(file) == FILE_TYPE_DISK;
  if (isFile && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) path = FinalPath(file);
  ::CloseHandle(file);
  return isFile && !path.empty() ? QVERR_OK : QVERR_FILE_CREATE_FAILED;
}

std::wstring RandomName() {
  std::random_device device;
  const std::uint64_t number = std::uint64_t{device()} << 32 | device();
  std::wstring name = L".";
  for (int shift = 60; shift >= 0; shift -= 4) name += L"0123456789abcdef"[number >> shift & 15];
  return name + L".part";
}

}  // namespace

struct PendingFile::State {
  std::wstring name;
  std::wstring target;  // where it will appear
  bool replace = false;
};

PendingFile::PendingFile() noexcept = default;

PendingFile::~PendingFile() {
  const ErrorModeGuard guard;
  if (state_ != nullptr) ::DeleteFileW(state_->name.c_str());
}

const std::wstring& PendingFile::Name() const noexcept { return state_->name; }

QVERRORCODE_TAG PendingFile::Create(const wchar_t* path, bool replace) {
  const ErrorModeGuard guard;
  auto state = std::make_unique<State>();
  state->replace = replace;
  state->target = FullPath(path);
  if (state->target.empty()) return QVERR_FILE_CREATE_FAILED;
  const DWORD attributes = ::GetFileAttributesW(state->target.c_str());
  if (attributes != INVALID_FILE_ATTRIBUTES) {
    if (!replace) return QVERR_FILE_CREATE_FAILED;
    const QVERRORCODE_TAG code = CheckReplaced(state->target, attributes);
    if (code != QVERR_OK) return code;
  } else if (::GetLastError() != ERROR_FILE_NOT_FOUND) {
    return CreationCode(::GetLastError());
  }
  const std::wstring directory = state->target.substr(0, state->target.find_last_of(L'\\') + 1);
  DWORD error = ERROR_FILE_EXISTS;
  for (int i = 0; i < kTries && error == ERROR_FILE_EXISTS; ++i) {
    state->name = directory + RandomName();
    const HANDLE file = ::CreateFileW(state->name.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                      FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file != INVALID_HANDLE_VALUE) {
      ::CloseHandle(file);
      state_ = std::move(state);
      return QVERR_OK;
    }
    error = ::GetLastError();
  }
  return CreationCode(error);
}

QVERRORCODE_TAG PendingFile::Publish() noexcept {
  const ErrorModeGuard guard;
  const DWORD flags = state_->replace ? MOVEFILE_REPLACE_EXISTING : 0;
  if (::MoveFileExW(state_->name.c_str(), state_->target.c_str(), flags) == 0) {
    return QVERR_FILE_CREATE_FAILED;
  }
  state_ = nullptr;
  return QVERR_OK;
}

}  // namespace Quorvex::platform
