// The poles of a band's predictor: two weights over the band's own past, and the prediction that
// they and the zeros make.
#pragma once

#include <algorithm>
#include <cstddef>

#include "codecs/engines/fixed_point.h"

namespace Quorvex::g722 {

using fixed_point::Word;

// Of the adaptive prediction of ITU-T G.722, as the leaks below.
inline constexpr int kFirstPoleGain = 192;
inline constexpr int kSecondPoleGain = 128;
inline constexpr int kMostSecondPole = 12288;  // Q14
inline constexpr int kMostPoles = 15360;

struct PolePredictor {
  Word first = 0;  // Q14
  Word second = 0;
  Word partial = 0;  // the last difference with the zeros' part, of which the sign alone matters
  Word olderPartial = 0;
  Word output = 0;  // twice the band's last sample
  Word zeroPart = 0;
  Word prediction = 0;  // of the band's next sample

  /// Goes on by a sample. @param newZeroPart  what the zeros give to the next prediction.
  void Update(int difference, Word newZeroPart) noexcept {
    using fixed_point::Saturate;
    const Word newPartial = Saturate(difference + zeroPart);
    const Word newOutput = Saturate(2 * (difference + prediction));
    Adapt(newPartial);
    const int polePart = Saturate(Product(first, newOutput) + Product(second, output));
    prediction = Saturate(polePart + newZeroPart);
    zeroPart = newZeroPart;
    olderPartial = partial;
    partial = newPartial;
    output = newOutput;
  }

 private:
  // Q15 x Q15. One of the factors is above -32768, so there is nothing to saturate.
  static constexpr int Product(int a, int b) noexcept { return (a * b) >> 15; }
  // 0 when two numbers have the same sign, else -1. 0 counts as positive.
  static constexpr int SignsDiffer(int a, int b) noexcept { return (a ^ b) >> 31; }
  // A number, or, for a sign of -1, its opposite.
  static constexpr int WithSign(int number, int sign) noexcept { return (number ^ sign) - sign; }

  void Adapt(int newPartial) noexcept {
    constexpr int kFirstLeak = 32640;  // Q15
    constexpr int kSecondLeak = 32512;
    const int sign = SignsDiffer(newPartial, partial);
    // Both saturations of the standard in one: they differ by one at most, which is shifted out.
    const int opposite = fixed_point::Saturate(WithSign(4 * first, ~sign));
    const int newSecond = (opposite >> 7) +
                          WithSign(kSecondPoleGain, SignsDiffer(newPartial, olderPartial)) +
                          Product(second, kSecondLeak);
    second = static_cast<Word>(std::clamp(newSecond, -kMostSecondPole, kMostSecondPole));
    const int most = kMostPoles - second;
    const int newFirst = WithSign(kFirstPoleGain, sign) + Product(first, kFirstLeak);
    first = static_cast<Word>(std::clamp(newFirst, -most, most));
  }
};

/// Goes on by so many samples of both bands, which alternate in the arrays, the lower one first.
/// With vector instructions where every processor of the build's kind has them.
/// @param zeroParts    what the zeros give after each difference
/// @param predictions  receives that of each sample
void Predict(PolePredictor& lower, PolePredictor& higher, const Word* differences,
             const Word* zeroParts, std::size_t count, Word* predictions) noexcept;

/// Predict in plain code.
void PredictPlain(PolePredictor& lower, PolePredictor& higher, const Word* differences,
                  const Word* zeroParts, std::size_t count, Word* predictions) noexcept;

}  // namespace Quorvex::g722
