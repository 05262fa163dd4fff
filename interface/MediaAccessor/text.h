// How the library hands out text, and a helper that turns any such call into a string.
//
// Wide text is the platform's wchar_t. Narrow text is UTF-8 on Linux and the ANSI code page on
// Windows. On Linux no file name is lost: a byte that is not valid UTF-8 travels as one wide
// character U+DC80..U+DCFF and comes back as that byte. A wide character that narrow text cannot
// hold becomes '?', except in the name of a file to open: no file has such a name.
//
// A text operation copies into the caller's buffer, whose capacity is counted in characters with
// the terminator included. The copy is cut to fit, always terminated, and never ends inside a
// narrow character. The operation returns the copied length plus one; with a null buffer, or a
// capacity of 0, it returns the whole length plus one, which is the capacity to come back with. 0
// is failure. (The extension operations of CMediaFileFactory differ: they return the bare length.)
//
// A null text argument counts as empty everywhere.
#pragma once

#include <string>

namespace Quorvex {

/// Collects the text of one operation that follows the rule above, for example
///     TextOf<char>([&](char* buffer, unsigned long capacity) {
///       return file->GetFormatDescription(buffer, capacity);
///     });
/// Empty when the operation fails. May throw std::bad_alloc: it is the caller's own code.
template <class Character, class Operation>
std::basic_string<Character> TextOf(const Operation& operation) {
  const unsigned long capacity = operation(static_cast<Character*>(nullptr), 0UL);
  if (capacity < 2) return {};
  std::basic_string<Character> text(capacity, Character{});
  const unsigned long copied = operation(text.data(), capacity);
  text.resize(copied > 0 ? (copied < capacity ? copied : capacity) - 1 : 0);
  return text;
}

}  // namespace Quorvex
