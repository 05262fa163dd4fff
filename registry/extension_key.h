// Extension keys: how the registry names an extension.
#pragma once

#include <string>
#include <string_view>

namespace Quorvex {

/// The key of an extension or a path: the text after the last dot, or after the last separator when
/// that comes later, lower-cased. A name without a dot is its own key.
std::wstring ExtensionKey(std::wstring_view pathOrExtension);

/// The key under which a path is opened: empty when the file name has no dot.
std::wstring ExtensionForOpening(std::wstring_view path);

}  // namespace Quorvex
