// Terminal and pipes of Windows.
#include "platform/console.h"

#include <fcntl.h>
#include <io.h>

#include "platform/win32/windows_api.h"

namespace Quorvex::platform {

bool IsTerminal(std::FILE* stream) noexcept {
  const auto console = reinterpret_cast<HANDLE>(::_get_osfhandle(::_fileno(stream)));
  DWORD mode = 0;
  // What a person watches is also asked to understand escape sequences.
  return ::GetConsoleMode(console, &mode) != 0 &&
         ::SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

void SetBinary(std::FILE* stream) noexcept { ::_setmode(::_fileno(stream), _O_BINARY); }

void ReportFailedWrites() noexcept {}  // they do

}  // namespace Quorvex::platform
