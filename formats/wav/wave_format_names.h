// What the coding of a WAV file is called.
#pragma once

#include <cstdint>
#include <string_view>

namespace Quorvex {

/// The name of a wave format tag and who registered it, as in "WAVE_FORMAT_OKI_ADPCM - OKI";
/// "Unknown format" for a tag that is not in the table. Static text, ASCII only.
std::wstring_view WaveFormatName(std::uint32_t tag) noexcept;

}  // namespace Quorvex
