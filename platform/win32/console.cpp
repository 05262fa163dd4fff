// Terminal and pipes of Windows.
#include "platform/console.h"

#include <fcntl.h>
#include <io.h>

#include <atomic>
#include <cstdlib>

#include "platform/win32/windows_api.h"

namespace Quorvex::platform {
namespace {

std::atomic<bool> isInterrupted = false;

// In a thread of the system's.
BOOL WINAPI NoteInterrupt(DWORD) {
  isInterrupted = true;
  return TRUE;
}

}  // namespace

bool IsTerminal(std::FILE* stream) noexcept {
  const auto console = reinterpret_cast<HANDLE>(::_get_osfhandle(::_fileno(stream)));
  DWORD mode = 0;
  // What a person watches is also asked to understand escape sequences.
  return ::GetConsoleMode(console, &mode) != 0 &&
         ::SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

void SetBinary(std::FILE* stream) noexcept { ::_setmode(::_fileno(stream), _O_BINARY); }

std::filesystem::path ArgumentPath(const std::string& argument) {
  const int length = static_cast<int>(argument.size());
  const int needed = ::MultiByteToWideChar(CP_ACP, 0, argument.data(), length, nullptr, 0);
  std::wstring wide(static_cast<std::size_t>(needed), L'\0');
  ::MultiByteToWideChar(CP_ACP, 0, argument.data(), length, wide.data(), needed);
  return wide;
}

// Failed writes are reported as it is. The console's code page outlives the program, so it is put
// back.
void PrepareProgram() noexcept {
  static const UINT previous = ::GetConsoleOutputCP();
  if (previous == 0 || ::SetConsoleOutputCP(::GetACP()) == 0) return;  // no console
  std::atexit([] { ::SetConsoleOutputCP(previous); });
}

void CatchInterrupts() noexcept { ::SetConsoleCtrlHandler(NoteInterrupt, TRUE); }
bool IsInterrupted() noexcept { return isInterrupted; }
void EndInterrupted() noexcept { std::exit(static_cast<int>(STATUS_CONTROL_C_EXIT)); }

}  // namespace Quorvex::platform
