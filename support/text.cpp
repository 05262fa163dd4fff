// Copies text into callers' buffers.
#include "support/text.h"

#include <algorithm>

namespace Quorvex {
namespace {

// `text` already fits where it must: what is left is the copy, the terminator and the count.
template <class Character>
unsigned long Deliver(std::basic_string_view<Character> text, Character* buffer) {
  *std::copy(text.begin(), text.end(), buffer) = Character{};
  return static_cast<unsigned long>(text.size()) + 1;
}

// The longest beginning whose narrow form leaves room for the terminator, found by bisection.
std::wstring_view LongestFit(std::wstring_view text, unsigned long capacity) {
  std::size_t fits = 0;
  std::size_t tooLong = text.size();
  while (tooLong - fits > 1) {
    const std::size_t middle = fits + (tooLong - fits) / 2;
    (platform::Narrow(text.substr(0, middle)).size() < capacity ? fits : tooLong) = middle;
  }
  return text.substr(0, fits);
}

}  // namespace

bool HasExtension(std::wstring_view path, std::wstring_view extension) noexcept {
  if (path.size() <= extension.size()) return false;
  path.remove_prefix(path.size() - extension.size() - 1);
  const auto isSame = [](wchar_t upper, wchar_t character) {
    const bool isLower = character >= L'a' && character <= L'z';
    return upper == (isLower ? static_cast<wchar_t>(character - L'a' + L'A') : character);
  };
  return path.front() == L'.' && std::ranges::equal(extension, path.substr(1), isSame);
}

unsigned long CopyText(std::wstring_view text, wchar_t* buffer, unsigned long capacity) noexcept {
  if (buffer == nullptr || capacity == 0) return static_cast<unsigned long>(text.size()) + 1;
  return Deliver(text.substr(0, capacity - 1), buffer);
}

unsigned long CopyText(std::wstring_view text, char* buffer, unsigned long capacity) noexcept {
  return NoThrowOr(0UL, [&] {
    std::string narrow = platform::Narrow(text);
    if (buffer == nullptr || capacity == 0) return static_cast<unsigned long>(narrow.size()) + 1;
    if (narrow.size() >= capacity) narrow = platform::Narrow(LongestFit(text, capacity));
    return Deliver<char>(narrow, buffer);
  });
}

}  // namespace Quorvex
