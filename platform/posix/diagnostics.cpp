// Diagnostic text of a POSIX system.
#include "platform/diagnostics.h"

#include <cstdlib>
#include <ctime>
#include <cwchar>

#include "platform/text.h"

namespace Quorvex::platform {

bool IsWide(std::FILE* stream) noexcept { return std::fwide(stream, 0) > 0; }

void WriteToDebugger(const std::wstring& text) {
  if (IsWide(stderr)) {
    std::fputws(text.c_str(), stderr);
  } else {
    std::fputs(Narrow(text).c_str(), stderr);
  }
  std::fflush(stderr);
}

// vswprintf fails where it should cut, so the text is made as long as it gets.
void FormatWide(wchar_t* buffer, std::size_t capacity, const wchar_t* format,
                std::va_list arguments) noexcept {
  buffer[0] = L'\0';
  wchar_t* text = nullptr;
  std::size_t length = 0;
  std::FILE* const stream = ::open_wmemstream(&text, &length);
  if (stream == nullptr) return;
  std::vfwprintf(stream, format, arguments);
  if (std::fclose(stream) == 0 && text != nullptr) {
    if (length >= capacity) length = capacity - 1;
    std::wmemcpy(buffer, text, length);
    buffer[length] = L'\0';
  }
  std::free(text);
}

std::wstring LocalTimeText() {
  const std::time_t now = std::time(nullptr);
  std::tm fields{};
  char text[26] = "";
  if (::localtime_r(&now, &fields) == nullptr || ::asctime_r(&fields, text) == nullptr) return {};
  return Widen(std::string_view(text).substr(0, 24));
}

}  // namespace Quorvex::platform
