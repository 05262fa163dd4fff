// Names of files, as the system takes them.
#pragma once

#include <string>

namespace Quorvex::platform {

/// The bytes of a wide name. False when it holds a character that no bytes stand for: such a name
/// is not the name of another file. May throw std::bad_alloc.
bool SystemFileName(const wchar_t* name, std::string& bytes);

}  // namespace Quorvex::platform
