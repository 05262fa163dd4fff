// What the tests need of the system besides files: other processes, names, clocks. Implemented once
// for each system, below platform/.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tests {

/// A program that runs beside the test.
class Process {
 public:
  /// Starts it. Its output goes into the given files, which are replaced; without a name it goes
  /// nowhere.
  /// @param command  the program's path and its arguments, which no shell reads. UTF-8.
  explicit Process(const std::vector<std::string>& command, const std::string& output = "",
                   const std::string& errors = "");
  /// Waits for its end. @return its exit code; -1 when it could not be started or did not exit.
  int Wait();

 private:
  std::intptr_t process_ = -1;
};

/// Runs a program whose standard output nobody reads any more. @return its exit code.
int RunWithoutReader(const std::vector<std::string>& command, const std::string& errors);

/// The program that is running.
std::string OwnProgram();

/// Makes a zone the process's local time, in the POSIX notation: "XYZ5" is five hours behind UTC.
void SetTimeZone(const char* zone);

/// Names that files of this system can have, each odd in its own way, without a directory.
std::vector<std::wstring> OddFileNames();

/// One of them in narrow text.
extern const char* const kOddNarrowFileName;

/// A device on which there is never any room; null when the system has none.
extern const char* const kFullDevice;

/// Whether this process has a file open, which nobody else may have.
bool IsHeld(const std::string& path);

/// A regular file that opens and fails to be read; null when the system has none.
extern const char* const kUnreadableFile;

/// Whether this is Windows, which has media frameworks and a compression manager of its own.
extern const bool kSystemIsWindows;

/// Whether what goes to the debugger arrives on standard error.
extern const bool kDebuggerIsStandardError;

}  // namespace tests
