// The progress line.
#pragma once

#include <chrono>
#include <string>

namespace media_accessor_tool {

/// A line on standard error that says how much of a file is done. It appears only on a terminal,
/// only when the work takes longer than a moment, and is wiped at the end.
class Progress {
 public:
  /// @param totalMilliseconds  length of the audio; 0 when unknown.
  Progress(std::string name, unsigned long long totalMilliseconds);
  ~Progress() { End(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void Show(unsigned long long doneMilliseconds);
  /// Wipes the line.
  void End();

 private:
  using Clock = std::chrono::steady_clock;

  const std::string name_;
  const unsigned long long total_;
  const bool isTerminal_;
  Clock::time_point next_;
  bool shown_ = false;
};

}  // namespace media_accessor_tool
