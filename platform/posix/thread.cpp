// Thread services of Linux.
#include "platform/thread.h"

#include <pthread.h>
#include <unistd.h>

#include <chrono>
#include <thread>

namespace Quorvex::platform {

std::uint32_t CurrentThreadId() noexcept { return static_cast<std::uint32_t>(::gettid()); }

std::uintptr_t CurrentThreadMark() noexcept { return ::pthread_self(); }

void SleepMilliseconds(int milliseconds) noexcept {
  if (milliseconds <= 0) {
    std::this_thread::yield();
  } else {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
  }
}

}  // namespace Quorvex::platform
