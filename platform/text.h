// Conversion between narrow text, wide text and UTF-16.
//
// On Linux narrow text is UTF-8 and nothing is lost: a byte that is not part of valid UTF-8 becomes
// U+DC80..U+DCFF and comes back as that byte. A wide character that no narrow text can hold becomes
// '?'. All three may throw std::bad_alloc.
#pragma once

#include <string>
#include <string_view>

namespace Quorvex::platform {

std::wstring Widen(std::string_view narrow);
std::string Narrow(std::wstring_view wide);

/// The 16-bit codes of wide text: characters beyond U+FFFF as surrogate pairs, everything else as
/// it is.
std::u16string ToUtf16(std::wstring_view wide);

}  // namespace Quorvex::platform
