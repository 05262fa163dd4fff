// Terminal and pipes of a POSIX system.
#include "platform/console.h"

#include <unistd.h>

#include <csignal>
#include <cstdlib>

namespace Quorvex::platform {

namespace {

constexpr int kInterrupts[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGXCPU};
volatile std::sig_atomic_t caught = 0;  // the signal

}  // namespace

bool IsTerminal(std::FILE* stream) noexcept { return ::isatty(::fileno(stream)) == 1; }

void SetBinary(std::FILE*) noexcept {}

std::filesystem::path ArgumentPath(const std::string& argument) { return argument; }

void PrepareProgram() noexcept {
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
}

// One that is ignored, as nohup has it, stays ignored.
void CatchInterrupts() noexcept {
  for (const int interrupt : kInterrupts) {
    if (std::signal(interrupt, [](int number) { caught = number; }) == SIG_IGN) {
      std::signal(interrupt, SIG_IGN);
    }
  }
}

bool IsInterrupted() noexcept { return caught != 0; }

void EndInterrupted() noexcept {
  std::signal(caught, SIG_DFL);
  std::raise(caught);
  std::_Exit(EXIT_FAILURE);
}

}  // namespace Quorvex::platform
