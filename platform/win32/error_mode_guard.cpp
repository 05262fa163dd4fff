// The error mode belongs to the process, so the guards of all threads count together, behind a spin
// flag that is held for a few instructions only.
#include "platform/win32/error_mode_guard.h"

#include <atomic>

#include "platform/win32/windows_api.h"

namespace Quorvex::platform {
namespace {

constexpr UINT kGuardMode = SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX;

constinit std::atomic<int> spinFlag{0};
constinit int guardCount = 0;
constinit UINT savedMode = 0;

class SpinFlagHolder {
 public:
  SpinFlagHolder() noexcept {
    for (int expected = 0; !spinFlag.compare_exchange_weak(expected, 1, std::memory_order_acquire);
         expected = 0) {
      ::Sleep(0);
    }
  }
  ~SpinFlagHolder() { spinFlag.store(0, std::memory_order_release); }
  SpinFlagHolder(const SpinFlagHolder&) = delete;
  SpinFlagHolder& operator=(const SpinFlagHolder&) = delete;
};

}  // namespace

ErrorModeGuard::ErrorModeGuard() noexcept {
  const SpinFlagHolder holder;
  if (++guardCount == 1) savedMode = ::SetErrorMode(kGuardMode);
}

ErrorModeGuard::~ErrorModeGuard() {
  const SpinFlagHolder holder;
  if (--guardCount != 0) return;
  const UINT replaced = ::SetErrorMode(savedMode);
  if (replaced != kGuardMode) ::SetErrorMode(replaced);
}

}  // namespace Quorvex::platform
