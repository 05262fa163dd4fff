// Diagnostic text of Windows.
#include "platform/diagnostics.h"

#include <ctime>
#include <cwchar>

#include "platform/text.h"
#include "platform/win32/windows_api.h"

namespace Quorvex::platform {

void WriteToDebugger(const std::wstring& text) { ::OutputDebugStringW(text.c_str()); }

void PrintFormat(std::FILE* stream, const std::wstring& format) {
  std::fwprintf(stream, format.c_str());
  std::fflush(stream);
}

void FormatWide(wchar_t* buffer, std::size_t capacity, const wchar_t* format,
                std::va_list arguments) noexcept {
  buffer[0] = L'\0';
  ::__mingw_vsnwprintf(buffer, capacity, format, arguments);
  buffer[capacity - 1] = L'\0';
}

std::wstring LocalTimeText() {
  const std::time_t now = std::time(nullptr);
  std::tm fields{};
  char text[26] = "";
  if (::localtime_s(&fields, &now) != 0 || ::asctime_s(text, sizeof text, &fields) != 0) return {};
  return Widen(std::string_view(text).substr(0, 24));
}

}  // namespace Quorvex::platform
