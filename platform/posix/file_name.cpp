// A name is told to the system only when it would come back the same.
#include "platform/posix/file_name.h"

#include "platform/text.h"

namespace Quorvex::platform {

bool SystemFileName(const wchar_t* name, std::string& bytes) {
  bytes = Narrow(name);
  return Widen(bytes) == name;
}

}  // namespace Quorvex::platform
