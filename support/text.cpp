// Copies text into callers' buffers.
#include "support/text.h"

#include <algorithm>
#include <exception>

namespace Quorvex {
namespace {

// `text` already fits where it must: what is left is the copy, the terminator and the count.
template <class Character>
unsigned long Deliver(std::basic_string_view<Character> text, Character* buffer) {
  *std::copy(text.begin(), text.end(), buffer) = Character{};
  return static_cast<unsigned long>(text.size()) + 1;
}

}  // namespace

unsigned long CopyText(std::wstring_view text, wchar_t* buffer, unsigned long capacity) noexcept {
  if (buffer == nullptr || capacity == 0) return static_cast<unsigned long>(text.size()) + 1;
  return Deliver(text.substr(0, capacity - 1), buffer);
}

unsigned long CopyText(std::wstring_view text, char* buffer, unsigned long capacity) noexcept try {
  std::string narrow = platform::Narrow(text);
  if (buffer == nullptr || capacity == 0) return static_cast<unsigned long>(narrow.size()) + 1;
  if (narrow.size() >= capacity) {
    // A wide character takes at least one narrow one, so no more than the capacity can remain.
    text = text.substr(0, capacity - 1);
    for (narrow = platform::Narrow(text); narrow.size() >= capacity;
         narrow = platform::Narrow(text)) {
      text.remove_suffix(1);
    }
  }
  return Deliver<char>(narrow, buffer);
} catch (const std::exception&) {
  return 0;
}

}  // namespace Quorvex
