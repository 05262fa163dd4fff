// Libraries of the system over LoadLibraryExW.
#include "platform/win32/system_library.h"

#include "platform/win32/error_mode_guard.h"

namespace Quorvex::platform {

HMODULE LoadSystemLibrary(const wchar_t* name) noexcept {
  const ErrorModeGuard guard;
  return ::LoadLibraryExW(name, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
}

}  // namespace Quorvex::platform
