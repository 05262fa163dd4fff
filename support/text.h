// The library's side of the text rule that interface/MediaAccessor/text.h states.
#pragma once

#include <MediaAccessor/text.h>

#include <string>
#include <string_view>

#include "platform/text.h"
#include "support/no_throw.h"

namespace Quorvex {

/// Copies text into a caller's buffer. @return the copied length plus one; without a buffer, or
/// with a capacity of 0, the whole length plus one; 0 when memory runs out.
unsigned long CopyText(std::wstring_view text, wchar_t* buffer, unsigned long capacity) noexcept;
/// The same, converted to narrow text and cut between characters.
unsigned long CopyText(std::wstring_view text, char* buffer, unsigned long capacity) noexcept;

/// The narrow form of a text operation that follows the rule: asks for the wide text and converts
/// it.
template <class WideOperation>
unsigned long NarrowForm(const WideOperation& operation, char* buffer, unsigned long capacity) {
  return NoThrowOr(0UL, [&] { return CopyText(TextOf<wchar_t>(operation), buffer, capacity); });
}

/// Whether a path ends in a dot and an extension, in any case of the letters A to Z.
/// @param extension  in upper case.
bool HasExtension(std::wstring_view path, std::wstring_view extension) noexcept;

/// A caller's text as wide text; null counts as empty. May throw std::bad_alloc.
inline std::wstring ToWide(const wchar_t* text) { return text != nullptr ? text : L""; }
inline std::wstring ToWide(const char* text) {
  return text != nullptr ? platform::Widen(text) : std::wstring();
}

}  // namespace Quorvex
