// Path syntax.
#pragma once

namespace Quorvex::platform {

/// Whether a character ends a directory's name: '\' everywhere, on Linux '/' too.
bool IsPathSeparator(wchar_t character) noexcept;

}  // namespace Quorvex::platform
