// Narrow text in the ANSI code page. Wide text is UTF-16 already.
#include "platform/text.h"

#include <limits>
#include <new>

#include "platform/win32/windows_api.h"

namespace Quorvex::platform {
namespace {

// The system counts text in int.
int CheckedLength(std::size_t length) {
  if (length > static_cast<std::size_t>(std::numeric_limits<int>::max())) throw std::bad_alloc();
  return static_cast<int>(length);
}

}  // namespace

std::wstring Widen(std::string_view narrow) {
  const int length = CheckedLength(narrow.size());
  if (length == 0) return {};
  const int needed = ::MultiByteToWideChar(CP_ACP, 0, narrow.data(), length, nullptr, 0);
  std::wstring wide(static_cast<std::size_t>(needed), L'\0');
  ::MultiByteToWideChar(CP_ACP, 0, narrow.data(), length, wide.data(), needed);
  return wide;
}

std::string Narrow(std::wstring_view wide) {
  const int length = CheckedLength(wide.size());
  if (length == 0) return {};
  // UTF-8, which can be the code page too, holds everything and takes neither of the two.
  const bool isUtf8 = ::GetACP() == CP_UTF8;
  const DWORD flags = isUtf8 ? 0 : WC_NO_BEST_FIT_CHARS;
  const char* const replacement = isUtf8 ? nullptr : "?";
  const int needed =
      ::WideCharToMultiByte(CP_ACP, flags, wide.data(), length, nullptr, 0, replacement, nullptr);
  std::string narrow(static_cast<std::size_t>(needed), '\0');
  ::WideCharToMultiByte(CP_ACP, flags, wide.data(), length, narrow.data(), needed, replacement,
                        nullptr);
  return narrow;
}

std::u16string ToUtf16(std::wstring_view wide) {
  static_assert(sizeof(wchar_t) == sizeof(char16_t));
  std::u16string units;
  units.reserve(wide.size());
  for (const wchar_t unit : wide) units += static_cast<char16_t>(unit);
  return units;
}

}  // namespace Quorvex::platform
