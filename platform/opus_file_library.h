// The library behind Ogg Opus files, libopusfile.
#pragma once

#include <opusfile.h>

#include <string>

namespace Quorvex::platform {

/// Its functions, as far as they are used.
struct OpusFileFunctions {
  decltype(&::op_open_callbacks) open = nullptr;
  decltype(&::op_pcm_total) pcmTotal = nullptr;
  decltype(&::op_channel_count) channelCount = nullptr;
  decltype(&::op_read) read = nullptr;
  decltype(&::op_free) free = nullptr;
};

/// Gives the library's functions. On Linux it is a shared object, which the first call loads and
/// which stays loaded: linked, it and what it needs would make the start of every process an eighth
/// longer. So no tool for packages sees that it is needed. On Windows it is part of ours. Any
/// thread.
/// @param error  receives the system's own words when the result is null.
/// @return null when the library is not there. May throw std::bad_alloc.
const OpusFileFunctions* OpusFileLibrary(std::wstring& error);

}  // namespace Quorvex::platform
