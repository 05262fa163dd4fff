// The expansion of G.711 code words, and the compression to them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace Quorvex {

/// The coding of a sample, by its wave format tag.
enum class WaveLaw : int { kLinear = 1, kALaw = 6, kMuLaw = 7 };

/// What readers call the codings.
inline constexpr const wchar_t* kALawName = L"CCITT A-Law";
inline constexpr const wchar_t* kMuLawName = L"CCITT u-Law";

/// Linear 16-bit value of each code word: ITU-T G.711, tables 1a and 2a, scaled to 16 bits as the
/// reference expansion does (A-law's 13 bits by 8, mu-law's 14 bits by 4).
using G711Table = std::array<std::int16_t, 256>;
extern const G711Table kG711ALaw;
extern const G711Table kG711MuLaw;

/// Expands code words. @param law  kALaw or kMuLaw.
void ExpandG711(WaveLaw law, const unsigned char* codes, std::size_t count,
                short* samples) noexcept;

/// Compresses samples to code words, by the decision values of ITU-T G.711, tables 1a and 2a, as
/// the reference of ITU-T G.191 does: bits below A-law's 13 and mu-law's 14 are cut off the
/// magnitude, that of a negative sample being its complement. @param law  kALaw or kMuLaw.
void CompressG711(WaveLaw law, const short* samples, std::size_t count,
                  unsigned char* codes) noexcept;

/// ExpandG711 with vector instructions. @return how many of the first code words were expanded, the
/// others being left: 0 where the processor has no such instructions.
std::size_t ExpandG711Vector(WaveLaw law, const unsigned char* codes, std::size_t count,
                             short* samples) noexcept;

}  // namespace Quorvex
