#include "codecs/engines/g729a/high_pass.h"

namespace Quorvex::g729a {

using namespace fixed_point;

namespace {

// From ITU-T G.729.
constexpr HighPassCoefficients kInput = {{1899, -3798, 1899}, {7807, -3733}};     // Q12, halved
constexpr HighPassCoefficients kOutput = {{7699, -15398, 7699}, {15836, -7667}};  // Q13

}  // namespace

Long HighPass::Next(const HighPassCoefficients& coefficients, int shift, Word sample) noexcept {
  const auto& [zeros, poles] = coefficients;
  Long sum = LongAdd(SplitMultiply(output1_, poles[0]), SplitMultiply(output2_, poles[1]));
  sum = MultiplyAdd(sum, sample, zeros[0]);
  sum = MultiplyAdd(sum, input1_, zeros[1]);
  sum = MultiplyAdd(sum, input2_, zeros[2]);
  sum = LongShiftLeft(sum, shift);
  input2_ = input1_;
  input1_ = sample;
  output2_ = output1_;
  output1_ = SplitUp(sum);
  return sum;
}

void HighPass::FilterInput(std::span<Word> samples) noexcept {
  for (Word& sample : samples) sample = Round(Next(kInput, 3, sample));
}

void HighPass::FilterOutput(std::span<Word> samples) noexcept {
  for (Word& sample : samples) sample = Round(LongShiftLeft(Next(kOutput, 2, sample), 1));
}

}  // namespace Quorvex::g729a
