// Thread services.
#pragma once

#include <cstdint>

namespace Quorvex::platform {

/// The system's id of the calling thread, never 0.
std::uint32_t CurrentThreadId() noexcept;

/// Sleeps; 0 gives up the rest of the time slice.
void SleepMilliseconds(int milliseconds) noexcept;

}  // namespace Quorvex::platform
