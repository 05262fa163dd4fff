// Codebooks and predictor of the gains, from ITU-T G.729.
#pragma once

#include <array>
#include <cstddef>

#include "codecs/engines/fixed_point.h"

namespace Quorvex::g729a {

/// What a row of a gain codebook adds.
struct GainPair {
  fixed_point::Word pitch;   ///< Q14
  fixed_point::Word factor;  ///< of the predicted gain of the fixed codebook, Q13
};

inline constexpr std::array<GainPair, 8> kFirstGains = {{{1, 1516},
                                                         {1551, 2425},
                                                         {1831, 5022},
                                                         {57, 5404},
                                                         {1921, 9291},
                                                         {3242, 9949},
                                                         {356, 14756},
                                                         {2678, 27162}}};
inline constexpr std::array<GainPair, 16> kSecondGains = {{{826, 2005},
                                                           {1994, 0},
                                                           {5142, 592},
                                                           {6160, 2395},
                                                           {8091, 4861},
                                                           {9120, 525},
                                                           {10573, 2966},
                                                           {11569, 1196},
                                                           {13260, 3256},
                                                           {14194, 1630},
                                                           {15132, 4914},
                                                           {15161, 14276},
                                                           {15434, 237},
                                                           {16112, 3392},
                                                           {17299, 1861},
                                                           {18973, 5935}}};

/// What a row of either codebook make together.
struct GainSum {
  fixed_point::Word pitch = 0;   ///< Q14
  fixed_point::Long factor = 0;  ///< Q13; may have more than 16 bits
};
constexpr GainSum SumOfRows(std::size_t first, std::size_t second) noexcept {
  return {fixed_point::Add(kFirstGains[first].pitch, kSecondGains[second].pitch),
          fixed_point::Long{kFirstGains[first].factor} + kSecondGains[second].factor};
}

/// The codebooks are sorted for the search, what is sent is sorted so that a wrong bit does little:
/// the index that stands for each row, and back.
inline constexpr std::array<unsigned char, 8> kFirstIndices = {5, 1, 4, 7, 3, 0, 6, 2};
inline constexpr std::array<unsigned char, 16> kSecondIndices = {4,  6,  0, 2,  12, 14, 8, 10,
                                                                 15, 11, 9, 13, 7,  3,  1, 5};
inline constexpr std::array<unsigned char, 8> kFirstRows = {5, 1, 7, 4, 2, 0, 6, 3};
inline constexpr std::array<unsigned char, 16> kSecondRows = {2, 14, 3, 13, 0, 15, 1, 12,
                                                              6, 10, 7, 9,  4, 11, 5, 8};

/// How much the four gains before count, the newest first, Q13.
inline constexpr std::array<fixed_point::Word, 4> kGainPredictor = {5571, 4751, 2785, 1556};

}  // namespace Quorvex::g729a
