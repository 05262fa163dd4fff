// Thread services of Linux.
#include "platform/thread.h"

#include <unistd.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace Quorvex::platform {

std::uint32_t CurrentThreadId() noexcept { return static_cast<std::uint32_t>(::gettid()); }

// Not pthread_self, which the next thread gets when one ends.
std::uintptr_t CurrentThreadMark() noexcept {
  static std::atomic<std::uintptr_t> last = 0;
  thread_local std::uintptr_t mark = 0;
  if (mark == 0) mark = ++last;
  return mark;
}

void SleepMilliseconds(int milliseconds) noexcept {
  if (milliseconds <= 0) {
    std::this_thread::yield();
  } else {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
  }
}

}  // namespace Quorvex::platform
