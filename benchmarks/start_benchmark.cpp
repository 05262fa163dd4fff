// A whole process that prints a tiny file's length: how much of a program's start is the library.
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

#include <string>
#include <vector>

#include "benchmarks/audio_files.h"
#include "benchmarks/comparison.h"

extern char** environ;

namespace {

unsigned long long RunProgram(const std::string& program, std::vector<std::string> arguments) {
  const std::string path = std::string(PROGRAM_DIR) + "/" + program;
  arguments.insert(arguments.begin(), path);
  std::vector<char*> argv;
  for (std::string& argument : arguments) argv.push_back(argument.data());
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  pid_t child = 0;
  int status = -1;
  if (posix_spawn(&child, path.c_str(), &actions, nullptr, argv.data(), environ) == 0) {
    waitpid(child, &status, 0);
  }
  posix_spawn_file_actions_destroy(&actions);
  return status == 0 ? 1 : 0;
}

}  // namespace

int main(int argc, char** argv) {
  const benchmarks::WavFile wav(1, 1, 2, 8000, 80);
  const std::string path = wav.Path();
  const std::string job = "process that prints a length";
  benchmarks::Add(job, "ours", "process", [path] { return RunProgram("print_duration", {path}); });
  benchmarks::Add(job, "libsndfile", "process",
                  [path] { return RunProgram("print_duration_libsndfile", {path}); });
  const std::string program = "media-accessor info";
  benchmarks::Add(program, "ours", "process", [path] {
    return RunProgram("media-accessor", {"info", path});
  });
  benchmarks::Add(program, "print_duration", "process",
                  [path] { return RunProgram("print_duration", {path}); });
  return benchmarks::RunAll(argc, argv);
}
