// Processes by CreateProcess.
#include "tests/test_system.h"

#include <stdlib.h>
#include <time.h>
#include <windows.h>

namespace tests {
namespace {

// As the C runtime takes a command line apart.
std::string Quoted(const std::string& argument) {
  std::string quoted = "\"";
  std::size_t backslashes = 0;
  for (const char character : argument) {
    if (character == '"') quoted.append(backslashes + 1, '\\');
    backslashes = character == '\\' ? backslashes + 1 : 0;
    quoted += character;
  }
  return quoted.append(backslashes, '\\') + "\"";
}

HANDLE OpenForOutput(const std::string& path) {
  SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
  return CreateFileA(path.empty() ? "NUL" : path.c_str(), FILE_APPEND_DATA,
                     FILE_SHARE_READ | FILE_SHARE_WRITE, &inheritable,
                     path.empty() ? OPEN_EXISTING : CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
}

HANDLE Start(const std::vector<std::string>& command, HANDLE output, HANDLE errors) {
  std::string line;
  for (const std::string& argument : command) {
    if (!line.empty()) line += ' ';
    line += Quoted(argument);
  }
  // Paths from std::filesystem are UTF-8.
  std::wstring wideLine(line.size() + 1, L'\0');
  MultiByteToWideChar(CP_UTF8, 0, line.data(), static_cast<int>(line.size()), wideLine.data(),
                      static_cast<int>(line.size()));
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdOutput = output;
  startup.hStdError = errors;
  PROCESS_INFORMATION information{};
  if (CreateProcessW(nullptr, wideLine.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                     &startup, &information) == 0) {
    return nullptr;
  }
  CloseHandle(information.hThread);
  return information.hProcess;
}

}  // namespace

Process::Process(const std::vector<std::string>& command, const std::string& output,
                 const std::string& errors) {
  const HANDLE out = OpenForOutput(output);
  const HANDLE err = errors == output && !output.empty() ? out : OpenForOutput(errors);
  process_ = reinterpret_cast<std::intptr_t>(Start(command, out, err));
  CloseHandle(out);
  if (err != out) CloseHandle(err);
}

int Process::Wait() {
  const auto process = reinterpret_cast<HANDLE>(process_);
  if (process == nullptr) return -1;
  DWORD code = 0;
  const bool ended = WaitForSingleObject(process, INFINITE) == WAIT_OBJECT_0 &&
                     GetExitCodeProcess(process, &code) != 0;
  CloseHandle(process);
  return ended ? static_cast<int>(code) : -1;
}

int RunWithoutReader(const std::vector<std::string>& command, const std::string& errors) {
  SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
  HANDLE readEnd = nullptr;
  HANDLE writeEnd = nullptr;
  if (CreatePipe(&readEnd, &writeEnd, &inheritable, 0) == 0) return -1;
  CloseHandle(readEnd);
  const HANDLE err = OpenForOutput(errors);
  const HANDLE process = Start(command, writeEnd, err);
  CloseHandle(writeEnd);
  CloseHandle(err);
  if (process == nullptr) return -1;
  DWORD code = 0;
  WaitForSingleObject(process, INFINITE);
  GetExitCodeProcess(process, &code);
  CloseHandle(process);
  return static_cast<int>(code);
}

std::string OwnProgram() {
  char path[MAX_PATH] = "";
  return std::string(path, GetModuleFileNameA(nullptr, path, MAX_PATH));
}

void SetTimeZone(const char* zone) {
  _putenv_s("TZ", zone);
  _tzset();
}

std::vector<std::wstring> OddFileNames() {
  return {
      L"\U0001D11E\u00FC \u65E5.wav",  // beyond the code page, and beyond U+FFFF
      L"'\u00E9 %x%.wav",
  };
}

const char* const kOddNarrowFileName = "\xFC '%x%.wav";
bool IsHeld(const std::string& path) {
  // Wants to be alone with it.
  const HANDLE file =
      ::CreateFileA(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  if (file == INVALID_HANDLE_VALUE) return ::GetLastError() == ERROR_SHARING_VIOLATION;
  ::CloseHandle(file);
  return false;
}

const char* const kUnreadableFile = nullptr;
const char* const kFullDevice = nullptr;
const bool kSystemIsWindows = true;
const bool kDebuggerIsStandardError = false;

}  // namespace tests
