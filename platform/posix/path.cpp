// Path syntax of a POSIX system. Paths written on Windows keep their meaning, so '\' separates too.
#include "platform/path.h"

namespace Quorvex::platform {

bool IsPathSeparator(wchar_t character) noexcept { return character == L'/' || character == L'\\'; }

}  // namespace Quorvex::platform
