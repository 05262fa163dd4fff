// A name is told to the system only when it would come back the same.
#include "platform/posix/file_name.h"

#include <algorithm>

#include "platform/text.h"

namespace Quorvex::platform {

bool SystemFileName(const wchar_t* name, std::string& bytes) {
  bytes = Narrow(name);
  // As most names are; the others are widened again to see what has become of them.
  const bool isPlain = std::all_of(bytes.begin(), bytes.end(), [](char byte) {
    return static_cast<signed char>(byte) > 0 && byte != '?';  // which stands for other characters
  });
  return isPlain || Widen(bytes) == name;
}

}  // namespace Quorvex::platform
