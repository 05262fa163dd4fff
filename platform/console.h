// What a command-line program needs of its terminal, its pipes and its arguments. Used by the tools
// only; it is not part of the library.
#pragma once

#include <cstdio>
#include <filesystem>
#include <string>

namespace Quorvex::platform {

/// Whether a stream is a terminal that a person watches.
bool IsTerminal(std::FILE* stream) noexcept;

/// Lets a stream carry bytes as they are.
void SetBinary(std::FILE* stream) noexcept;

/// A command-line argument as the path that it means. May throw std::bad_alloc.
std::filesystem::path ArgumentPath(const std::string& argument);

/// To be called first. Makes a write to a closed pipe, or past a limit on a file's size, fail with
/// an error instead of ending the program silently; lets a console show the program's narrow text.
void PrepareProgram() noexcept;

/// From now on an interrupt from the keyboard, or a request to end, does not end the program, which
/// is to look at IsInterrupted instead, clean up, and call EndInterrupted.
void CatchInterrupts() noexcept;
bool IsInterrupted() noexcept;
/// Ends the program the way it would have ended.
[[noreturn]] void EndInterrupted() noexcept;

}  // namespace Quorvex::platform
