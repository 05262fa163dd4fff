// UTF-8 both ways, lossless for any byte sequence:
//
//     valid UTF-8             <->  its code point
//     any other byte 80..FF   <->  U+DC80..U+DCFF, which valid UTF-8 never contains
#include "platform/text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace Quorvex::platform {
namespace {

constexpr std::uint32_t kEscapeFirst = 0xDC80;  // stands for byte 0x80
constexpr std::uint32_t kEscapeLast = 0xDCFF;   // stands for byte 0xFF

std::uint32_t CodeOf(wchar_t character) { return static_cast<char32_t>(character); }

bool IsSurrogate(std::uint32_t code) { return code >= 0xD800 && code <= 0xDFFF; }

// How many of the first characters are ASCII, as in most texts all are: they stay as they are.
template <class Character>
std::size_t PlainLength(std::basic_string_view<Character> text) {
  const auto isPlain = [](Character c) { return static_cast<std::uint32_t>(c) < 0x80; };
  return static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), isPlain) -
                                  text.begin());
}

// Length of the UTF-8 sequence that starts here, its code point in `code`; 0 when it is not valid
// (RFC 3629: shortest form, no surrogates, at most U+10FFFF).
std::size_t DecodeSequence(std::string_view text, std::uint32_t& code) {
  const auto lead = static_cast<unsigned char>(text[0]);
  std::size_t length = 0;
  std::uint32_t smallest = 0;
  if (lead < 0x80) {
    code = lead;
    return 1;
  }
  if ((lead & 0xE0) == 0xC0) {
    length = 2, smallest = 0x80, code = lead & 0x1F;
  } else if ((lead & 0xF0) == 0xE0) {
    length = 3, smallest = 0x800, code = lead & 0x0F;
  } else if ((lead & 0xF8) == 0xF0) {
    length = 4, smallest = 0x10000, code = lead & 0x07;
  } else {
    return 0;
  }
  if (text.size() < length) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    const auto next = static_cast<unsigned char>(text[i]);
    if ((next & 0xC0) != 0x80) return 0;
    code = (code << 6) | (next & 0x3F);
  }
  return code < smallest || code > 0x10FFFF || IsSurrogate(code) ? 0 : length;
}

void AppendUtf8(std::string& text, std::uint32_t code) {
  const auto continuation = [](std::uint32_t bits) {
    return static_cast<char>(0x80 | (bits & 0x3F));
  };
  if (code < 0x80) {
    text += static_cast<char>(code);
  } else if (code < 0x800) {
    text += static_cast<char>(0xC0 | (code >> 6));
    text += continuation(code);
  } else if (code < 0x10000) {
    text += static_cast<char>(0xE0 | (code >> 12));
    text += continuation(code >> 6);
    text += continuation(code);
  } else {
    text += static_cast<char>(0xF0 | (code >> 18));
    text += continuation(code >> 12);
    text += continuation(code >> 6);
    text += continuation(code);
  }
}

}  // namespace

std::wstring Widen(std::string_view narrow) {
  const std::size_t plain = PlainLength(narrow);
  std::wstring wide(narrow.begin(), narrow.begin() + static_cast<std::ptrdiff_t>(plain));
  narrow.remove_prefix(plain);
  while (!narrow.empty()) {
    std::uint32_t code = 0;
    std::size_t length = DecodeSequence(narrow, code);
    if (length == 0) {
      code = kEscapeFirst + (static_cast<unsigned char>(narrow[0]) - 0x80U);
      length = 1;
    }
    wide += static_cast<wchar_t>(code);
    narrow.remove_prefix(length);
  }
  return wide;
}

std::string Narrow(std::wstring_view wide) {
  std::string narrow(PlainLength(wide), '\0');
  std::transform(wide.begin(), wide.begin() + static_cast<std::ptrdiff_t>(narrow.size()),
                 narrow.begin(), [](wchar_t character) { return static_cast<char>(character); });
  wide.remove_prefix(narrow.size());
  for (const wchar_t character : wide) {
    const std::uint32_t code = CodeOf(character);
    if (code >= kEscapeFirst && code <= kEscapeLast) {
      narrow += static_cast<char>(code - kEscapeFirst + 0x80U);
    } else if (IsSurrogate(code) || code > 0x10FFFF) {
      narrow += '?';
    } else {
      AppendUtf8(narrow, code);
    }
  }
  return narrow;
}

std::u16string ToUtf16(std::wstring_view wide) {
  std::u16string units;
  units.reserve(wide.size());
  for (const wchar_t character : wide) {
    const std::uint32_t code = CodeOf(character);
    if (code < 0x10000) {
      units += static_cast<char16_t>(code);
    } else {
      units += static_cast<char16_t>(0xD800 + (((code - 0x10000) >> 10) & 0x3FF));
      units += static_cast<char16_t>(0xDC00 + (code & 0x3FF));
    }
  }
  return units;
}

}  // namespace Quorvex::platform
