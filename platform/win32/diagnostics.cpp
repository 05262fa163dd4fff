// Diagnostic text of Windows.
#include "platform/diagnostics.h"

#include <fcntl.h>
#include <io.h>

#include <ctime>
#include <cwchar>

#include "platform/text.h"
#include "platform/win32/windows_api.h"

namespace Quorvex::platform {

// The mode of a stream is only told to who sets another.
bool IsWide(std::FILE* stream) noexcept {
  constexpr int kWideModes = _O_WTEXT | _O_U16TEXT | _O_U8TEXT;
  std::fflush(stream);
  const int mode = ::_setmode(::_fileno(stream), _O_TEXT);
  if (mode == -1) return false;
  ::_setmode(::_fileno(stream), mode);
  return (mode & kWideModes) != 0;
}

void WriteToDebugger(const std::wstring& text) { ::OutputDebugStringW(text.c_str()); }

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
  if (text[8] == '0') text[8] = ' ';  // the day, as the standard has it
  return Widen(std::string_view(text).substr(0, 24));
}

}  // namespace Quorvex::platform
