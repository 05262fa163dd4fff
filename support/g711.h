// The expansion of G.711 code words.
#pragma once

#include <array>
#include <cstdint>

namespace Quorvex {

/// The coding of a sample, by its wave format tag.
enum class WaveLaw : int { kLinear = 1, kALaw = 6, kMuLaw = 7 };

/// Linear 16-bit value of each code word: ITU-T G.711, tables 1a and 2a, scaled to 16 bits as the
/// reference expansion does (A-law's 13 bits by 8, mu-law's 14 bits by 4).
using G711Table = std::array<std::int16_t, 256>;
extern const G711Table kG711ALaw;
extern const G711Table kG711MuLaw;

}  // namespace Quorvex
