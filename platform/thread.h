// Thread services.
#pragma once

#include <cstdint>

namespace Quorvex::platform {

/// The system's id of the calling thread, for people to read. On Linux it costs a system call.
std::uint32_t CurrentThreadId() noexcept;

/// Tells the calling thread from every other. Never 0, and cheap.
std::uintptr_t CurrentThreadMark() noexcept;

/// Sleeps; 0 gives up the rest of the time slice.
void SleepMilliseconds(int milliseconds) noexcept;

}  // namespace Quorvex::platform
