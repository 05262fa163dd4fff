// What a command-line program needs of its terminal and its pipes. Used by the tools only; it is
// not part of the library.
#pragma once

#include <cstdio>

namespace Quorvex::platform {

/// Whether a stream is a terminal that a person watches.
bool IsTerminal(std::FILE* stream) noexcept;

/// Lets a stream carry bytes as they are.
void SetBinary(std::FILE* stream) noexcept;

/// Makes a write to a closed pipe, or past a limit on a file's size, fail with an error instead of
/// ending the program silently.
void ReportFailedWrites() noexcept;

}  // namespace Quorvex::platform
