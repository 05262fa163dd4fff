// Processes by posix_spawn.
#include "tests/test_system.h"

#include <fcntl.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <filesystem>
#include <system_error>

extern char** environ;

namespace tests {
namespace {

pid_t Spawn(std::vector<std::string> command, const posix_spawn_file_actions_t& actions) {
  std::vector<char*> argv;
  for (std::string& argument : command) argv.push_back(argument.data());
  argv.push_back(nullptr);
  pid_t child = -1;
  return posix_spawn(&child, argv[0], &actions, nullptr, argv.data(), environ) == 0 ? child : -1;
}

void Redirect(posix_spawn_file_actions_t& actions, int descriptor, const std::string& path) {
  posix_spawn_file_actions_addopen(&actions, descriptor, path.empty() ? "/dev/null" : path.c_str(),
                                   O_WRONLY | O_CREAT | O_TRUNC | O_APPEND, 0666);
}

}  // namespace

Process::Process(const std::vector<std::string>& command, const std::string& output,
                 const std::string& errors) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  Redirect(actions, STDOUT_FILENO, output);
  Redirect(actions, STDERR_FILENO, errors);
  process_ = Spawn(command, actions);
  posix_spawn_file_actions_destroy(&actions);
}

int Process::Wait() {
  int status = 0;
  if (process_ < 0 || waitpid(static_cast<pid_t>(process_), &status, 0) < 0) return -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

int RunWithoutReader(const std::vector<std::string>& command, const std::string& errors) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return -1;
  close(ends[0]);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
  Redirect(actions, STDERR_FILENO, errors);
  const pid_t child = Spawn(command, actions);
  posix_spawn_file_actions_destroy(&actions);
  close(ends[1]);
  int status = 0;
  if (child < 0 || waitpid(child, &status, 0) < 0) return -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string OwnProgram() { return std::filesystem::read_symlink("/proc/self/exe").string(); }

void SetTimeZone(const char* zone) {
  setenv("TZ", zone, 1);
  tzset();
}

std::vector<std::wstring> OddFileNames() {
  return {
      L"\U0001D11E\u00FC \u65E5.wav",                                  // beyond U+FFFF
      std::wstring{L'x', wchar_t{0xDCFF}, wchar_t{0xDC80}} + L".wav",  // bytes FF and 80
      L"a\"'\n\\b.wav",
  };
}

const char* const kOddNarrowFileName = "\xFF\"\n.wav";
bool IsHeld(const std::string& path) {
  for (const auto& descriptor : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code error;
    if (std::filesystem::equivalent(descriptor.path(), path, error)) return true;
  }
  return false;
}

const char* const kUnreadableFile = "/proc/self/mem";  // nothing is mapped at its beginning
const char* const kFullDevice = "/dev/full";
const bool kSystemIsWindows = false;
const bool kDebuggerIsStandardError = true;

}  // namespace tests
