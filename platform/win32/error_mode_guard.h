// ErrorModeGuard: no message box while the library touches files and modules.
#pragma once

namespace Quorvex::platform {

/// As long as one of these exists anywhere in the process, a missing medium, a file that cannot be
/// opened or a module that is none is an error code and never a message box. The first one saves
/// the process's error mode; the last one restores it, unless somebody else changed it meanwhile:
/// then that change survives. Any thread.
class ErrorModeGuard {
 public:
  ErrorModeGuard() noexcept;
  ~ErrorModeGuard();
  ErrorModeGuard(const ErrorModeGuard&) = delete;
  ErrorModeGuard& operator=(const ErrorModeGuard&) = delete;
};

}  // namespace Quorvex::platform
