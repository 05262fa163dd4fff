// The basic operators at their limits: what ITU-T G.191 says of each.
#include "codecs/engines/fixed_point.h"

#include <gtest/gtest.h>

#include <climits>

namespace {

using namespace Quorvex::fixed_point;

TEST(FixedPoint, Limits) {
  constexpr Word kMost = 32767, kLeast = -32768;
  constexpr Long kMostL = 2147483647, kLeastL = -kMostL - 1;
  const struct {
    const char* operation;
    Long result, expected;
  } cases[] = {
      {"add, up", Add(kMost, 1), kMost},
      {"add, down", Add(kLeast, -1), kLeast},
      {"sub, up", Subtract(0, kLeast), kMost},
      {"sub, down", Subtract(kLeast, 1), kLeast},
      {"negate", Negate(kLeast), kMost},
      {"abs", Absolute(kLeast), kMost},
      {"L_add, up", LongAdd(kMostL, 1), kMostL},
      {"L_add, down", LongAdd(kLeastL, -1), kLeastL},
      {"L_sub, up", LongSubtract(0, kLeastL), kMostL},
      {"L_sub, down", LongSubtract(kLeastL, 1), kLeastL},
      {"L_negate", LongNegate(kLeastL), kMostL},
      {"L_abs", LongAbsolute(kLeastL), kMostL},
      {"mult of -1 and -1", Multiply(kLeast, kLeast), kMost},
      {"mult, down to -1", Multiply(-1, 1), -1},
      {"mult_r of -1 and -1", MultiplyRounded(kLeast, kLeast), kMost},
      {"mult_r of 1/2", MultiplyRounded(1, 0x4000), 1},
      {"mult_r, below 1/2", MultiplyRounded(1, 0x3FFF), 0},
      {"mult_r of -1/2", MultiplyRounded(-1, 0x4000), 0},
      {"mult_r, below -1/2", MultiplyRounded(-1, 0x4001), -1},
      {"L_mult of -1 and -1", LongMultiply(kLeast, kLeast), kMostL},
      {"L_mac, up", MultiplyAdd(kMostL, 1, 1), kMostL},
      {"L_mac, the product first", MultiplyAdd(-1, kLeast, kLeast), kMostL - 1},
      {"L_msu, down", MultiplySubtract(kLeastL, 1, 1), kLeastL},
      {"L_msu, the product first", MultiplySubtract(0, kLeast, kLeast), -kMostL},
      {"shl, up", ShiftLeft(1, 15), kMost},
      {"shl, down to the limit", ShiftLeft(-1, 15), kLeast},
      {"shl, further", ShiftLeft(-1, INT_MAX), kLeast},
      {"shl, other way", ShiftLeft(-5, -1), -3},
      {"shl, far the other way", ShiftLeft(kMost, INT_MIN), 0},
      {"shr, down", ShiftRight(-1, 1), -1},
      {"shr, further", ShiftRight(kLeast, INT_MAX), -1},
      {"shr, other way", ShiftRight(3, -2), 12},
      {"shr, far the other way", ShiftRight(1, INT_MIN), kMost},
      {"L_shl, up", LongShiftLeft(1, 31), kMostL},
      {"L_shl, down to the limit", LongShiftLeft(-1, 31), kLeastL},
      {"L_shl, further", LongShiftLeft(-1, INT_MAX), kLeastL},
      {"L_shl of 0", LongShiftLeft(0, INT_MAX), 0},
      {"L_shl, other way", LongShiftLeft(-5, -1), -3},
      {"L_shl, far the other way", LongShiftLeft(kLeastL, INT_MIN), -1},
      {"L_shr by the width", LongShiftRight(kMostL, 32), 0},
      {"L_shr, other way", LongShiftRight(3, -2), 12},
      {"L_shr, far the other way", LongShiftRight(-1, INT_MIN), kLeastL},
      {"L_shr_r", LongShiftRightRounded(5, 1), 3},
      {"L_shr_r, negative", LongShiftRightRounded(-5, 1), -2},
      {"L_shr_r past the width", LongShiftRightRounded(kMostL, 32), 0},
      {"L_shr_r by all bits", LongShiftRightRounded(kMostL, 31), 1},
      {"extract_h, down", High(-1), -1},
      {"extract_l, wraps", Low(0x12348000), kLeast},
      {"L_deposit_h", Deposit(kLeast), kLeastL},
      {"round, up", Round(kMostL), kMost},
      {"round of 1/2", Round(0x8000), 1},
      {"round of -1/2", Round(-0x8000), 0},
      {"round, below -1/2", Round(-0x8001), -1},
      {"norm_s of 0", Norm(0), 0},
      {"norm_s of -1", Norm(-1), 15},
      {"norm_s of the most", Norm(kMost), 0},
      {"norm_s of the least", Norm(kLeast), 0},
      {"norm_s of -16384", Norm(-0x4000), 1},
      {"norm_l of 0", LongNorm(0), 0},
      {"norm_l of -1", LongNorm(-1), 31},
      {"norm_l of the most", LongNorm(kMostL), 0},
      {"norm_l of the least", LongNorm(kLeastL), 0},
      {"div_s of equals", Divide(7, 7), kMost},
      {"div_s, down", Divide(2, 3), 21845},
      {"div_s at the limit", Divide(32766, kMost), 32766},
  };
  for (const auto& test : cases) EXPECT_EQ(test.result, test.expected) << test.operation;
}

}  // namespace
