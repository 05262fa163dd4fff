// Thread services of Windows.
#include "platform/thread.h"

#include "platform/win32/windows_api.h"

namespace Quorvex::platform {

std::uint32_t CurrentThreadId() noexcept { return ::GetCurrentThreadId(); }

std::uintptr_t CurrentThreadMark() noexcept { return ::GetCurrentThreadId(); }

void SleepMilliseconds(int milliseconds) noexcept {
  ::Sleep(milliseconds > 0 ? static_cast<DWORD>(milliseconds) : 0);
}

}  // namespace Quorvex::platform
