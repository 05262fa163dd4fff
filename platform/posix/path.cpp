// Path syntax of a POSIX system. Paths written on Windows keep their meaning, so '\' separates too.
#include "platform/path.h"

#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <system_error>

#include "platform/posix/file_name.h"
#include "platform/text.h"

namespace Quorvex::platform {

bool IsPathSeparator(wchar_t character) noexcept { return character == L'/' || character == L'\\'; }

bool ResolvePath(const std::wstring& name, std::wstring& full) {
  if (name.empty()) return false;
  if (name.front() == L'/') {
    full = name;
    return true;
  }
  std::error_code error;
  const std::filesystem::path base = std::filesystem::current_path(error);
  if (error) return false;
  full = Widen(base.native());
  if (full.back() != L'/') full += L'/';
  full += name;
  return true;
}

bool Exists(const wchar_t* path) {
  std::string name;
  struct stat status {};
  return SystemFileName(path, name) && ::stat(name.c_str(), &status) == 0;
}

}  // namespace Quorvex::platform
