// Numbers of ITU-T G.722, as its fixed-point release (ITU-T G.191) has them. Levels and steps are
// in Q12 where nothing else is said.
#pragma once

#include <array>

#include "codecs/engines/fixed_point.h"

namespace Quorvex::g722 {

using fixed_point::Word;

/// The 24 taps of both quadrature mirror filters, Q14.
inline constexpr std::array<Word, 24> kMirrorTaps = {
    6,    -22,  -22,   106,  24,  -312, 64,   724, -420, -1610, 1902, 7752,
    7752, 1902, -1610, -420, 724, 64,   -312, 24,  106,  -22,   -22,  6};

/// Decision levels of the lower band's 60-level quantiser, by interval.
inline constexpr std::array<Word, 30> kLowerDecisions = {
    0,   35,  72,  110, 150,  190,  233,  276,  323,  370,  422,  473,  530,  587,  650,
    714, 786, 858, 940, 1023, 1121, 1219, 1339, 1458, 1612, 1765, 1980, 2195, 2557, 2919};

/// Code words of its intervals, for negative and other differences.
inline constexpr unsigned char kLowerCodes[2][31] = {
    {0,  63, 62, 31, 30, 29, 28, 27, 26, 25, 24, 23, 22, 21, 20, 19,
     18, 17, 16, 15, 14, 13, 12, 11, 10, 9,  8,  7,  6,  5,  4},
    {0,  61, 60, 59, 58, 57, 56, 55, 54, 53, 52, 51, 50, 49, 48, 47,
     46, 45, 44, 43, 42, 41, 40, 39, 38, 37, 36, 35, 34, 33, 32}};

/// Output levels of the lower band's quantisers of 6, 5 and 4 bits, by magnitude.
inline constexpr std::array<Word, 31> kLowerLevels6 = {
    0,   17,  54,  91,  130,  170,  211,  254,  300,  347,  396,  447,  501,  558,  618, 682,
    750, 822, 899, 982, 1072, 1170, 1279, 1399, 1535, 1689, 1873, 2088, 2376, 2738, 3101};
inline constexpr std::array<Word, 16> kLowerLevels5 = {
    0, 35, 110, 190, 276, 370, 473, 587, 714, 858, 1023, 1219, 1458, 1765, 2195, 2919};
inline constexpr std::array<Word, 8> kLowerLevels4 = {0, 150, 323, 530, 786, 1121, 1612, 2557};

/// The magnitude of each code word, below 0 where its level is negative. Code words that no encoder
/// sends have one too.
inline constexpr std::array<Word, 64> kLowerMagnitudes6 = {
    -1,  -1,  -1,  -1,  -30, -29, -28, -27, -26, -25, -24, -23, -22, -21, -20, -19,
    -18, -17, -16, -15, -14, -13, -12, -11, -10, -9,  -8,  -7,  -6,  -5,  -4,  -3,
    30,  29,  28,  27,  26,  25,  24,  23,  22,  21,  20,  19,  18,  17,  16,  15,
    14,  13,  12,  11,  10,  9,   8,   7,   6,   5,   4,   3,   2,   1,   -2,  -1};
inline constexpr std::array<Word, 32> kLowerMagnitudes5 = {
    -1, -1, -15, -14, -13, -12, -11, -10, -9, -8, -7, -6, -5, -4, -3, -2,
    15, 14, 13,  12,  11,  10,  9,   8,   7,  6,  5,  4,  3,  2,  1,  -1};
inline constexpr std::array<Word, 16> kLowerMagnitudes4 = {0, -7, -6, -5, -4, -3, -2, -1,
                                                           7, 6,  5,  4,  3,  2,  1,  0};

/// The higher band's decision level, its code words for negative and other differences below the
/// level and above, its output levels and the magnitudes of its code words.
inline constexpr Word kHigherDecision = 564;
inline constexpr unsigned char kHigherCodes[2][2] = {{1, 0}, {3, 2}};
inline constexpr std::array<Word, 3> kHigherLevels = {0, 202, 926};
inline constexpr std::array<Word, 4> kHigherMagnitudes = {-2, -1, 2, 1};

/// What a code word adds to the logarithm of the quantiser's step, Q11, by magnitude: in the lower
/// band that of its 4 upper bits.
inline constexpr std::array<Word, 8> kLowerStepChanges = {-60, -30, 58, 172, 334, 538, 1198, 3042};
inline constexpr std::array<Word, 3> kHigherStepChanges = {0, -214, 798};

/// The step of each 32nd part of an octave.
inline constexpr std::array<Word, 32> kSteps = {
    2048, 2093, 2139, 2186, 2233, 2282, 2332, 2383, 2435, 2489, 2543, 2599, 2656, 2714, 2774, 2834,
    2896, 2960, 3025, 3091, 3158, 3228, 3298, 3371, 3444, 3520, 3597, 3676, 3756, 3838, 3922, 4008};

}  // namespace Quorvex::g722
