// Terminal and pipes of a POSIX system.
#include "platform/console.h"

#include <unistd.h>

#include <csignal>

namespace Quorvex::platform {

bool IsTerminal(std::FILE* stream) noexcept { return ::isatty(::fileno(stream)) == 1; }

void SetBinary(std::FILE*) noexcept {}

std::filesystem::path ArgumentPath(const std::string& argument) { return argument; }

void PrepareProgram() noexcept {
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
}

}  // namespace Quorvex::platform
