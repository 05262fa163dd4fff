// Where diagnostic text goes, and what it is made of.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <string>

namespace Quorvex::platform {

/// Gives text to the debugger; on Linux, which has none to listen, to standard error. May throw
/// std::bad_alloc.
void WriteToDebugger(const std::wstring& text);

/// Whether a stream takes wide text, because the program made it a wide one.
bool IsWide(std::FILE* stream) noexcept;

/// Formats as ISO C does ("%s" takes narrow text, "%ls" wide text) and cuts what does not fit.
/// @param buffer    receives the text, terminated.
/// @param capacity  in characters, at least 1.
void FormatWide(wchar_t* buffer, std::size_t capacity, const wchar_t* format,
                std::va_list arguments) noexcept;

/// The current local time as asctime writes it, "Sat Nov 21 14:56:06 2026", without the line feed.
std::wstring LocalTimeText();

}  // namespace Quorvex::platform
