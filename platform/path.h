// Path syntax.
#pragma once

#include <string>

namespace Quorvex::platform {

/// Whether a character ends a directory's name: '\' everywhere, on Linux '/' too.
bool IsPathSeparator(wchar_t character) noexcept;

/// Makes a name absolute: a relative one is resolved against the process's working directory. On
/// Windows a name with a drive letter or two leading backslashes is taken as it is, on Linux one
/// that begins with '/'. Nothing needs to exist.
/// @return false when the name is empty or there is nothing to resolve it against. May throw
///         std::bad_alloc.
bool ResolvePath(const std::wstring& name, std::wstring& full);

/// Whether there is anything of that name, whatever it is. May throw std::bad_alloc.
bool Exists(const wchar_t* path);

}  // namespace Quorvex::platform
