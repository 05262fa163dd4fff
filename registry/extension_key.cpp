// Extension keys. Example, with '\' as the separator:
//
//     C:\dir.x\Take.Wav   key "wav"    for opening "wav"
//     C:\dir.x\name       key "name"   for opening ""
#include "registry/extension_key.h"

#include <algorithm>

#include "platform/path.h"

namespace Quorvex {
namespace {

// Where the file name begins.
std::size_t AfterLastSeparator(std::wstring_view path) {
  const auto last = std::find_if(path.rbegin(), path.rend(), platform::IsPathSeparator);
  return static_cast<std::size_t>(path.rend() - last);
}

// A to Z and the seven accented capitals of Spanish, nothing else on purpose: a wider folding would
// merge keys that callers keep apart.
wchar_t Lower(wchar_t character) {
  constexpr std::wstring_view kFoldedLatin1 = L"\u00C1\u00C9\u00CD\u00D1\u00D3\u00DA\u00DC";
  const bool folded = (character >= L'A' && character <= L'Z') ||
                      kFoldedLatin1.find(character) != std::wstring_view::npos;
  return folded ? static_cast<wchar_t>(character + 0x20) : character;
}

std::wstring Folded(std::wstring_view text) {
  std::wstring folded(text);
  std::transform(folded.begin(), folded.end(), folded.begin(), Lower);
  return folded;
}

}  // namespace

std::wstring ExtensionKey(std::wstring_view pathOrExtension) {
  const std::size_t dot = pathOrExtension.rfind(L'.');
  const std::size_t afterDot = dot == std::wstring_view::npos ? 0 : dot + 1;
  return Folded(pathOrExtension.substr(std::max(afterDot, AfterLastSeparator(pathOrExtension))));
}

// Looks at the end of the path alone: every file that is opened comes by.
std::wstring ExtensionForOpening(std::wstring_view path) {
  const std::size_t dot = path.rfind(L'.');
  if (dot == std::wstring_view::npos) return {};
  const std::wstring_view ending = path.substr(dot + 1);
  const bool isOfDirectory = std::any_of(ending.begin(), ending.end(), platform::IsPathSeparator);
  return isOfDirectory ? std::wstring() : Folded(ending);
}

}  // namespace Quorvex
