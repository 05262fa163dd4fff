// The adaptive predictor of a band: six zeros over the quantised differences, two poles over the
// band's own past. Both bands have the same.
#pragma once

#include <algorithm>
#include <array>

#include "codecs/engines/fixed_point.h"

namespace Quorvex::g722 {

class AdaptivePredictor {
 public:
  /// Of the band's next sample.
  int Prediction() const noexcept { return prediction_; }

  /// Goes on by a sample.
  /// @param difference  what the quantiser made of the sample less its prediction: within 10,228,
  ///                    since no band's step times its highest level is more.
  void Update(int difference) noexcept {
    using fixed_point::Saturate;
    const int partial = Saturate(difference + zeroPart_);
    const int output = Saturate(2 * Saturate(difference + prediction_));
    AdaptPoles(partial);
    zeroPart_ = AdaptZeros(difference);
    const int polePart = Saturate(Product(poles_[0], output) + Product(poles_[1], previousOutput_));
    prediction_ = Saturate(polePart + zeroPart_);
    partials_[1] = partials_[0];
    partials_[0] = partial;
    previousOutput_ = output;
  }

 private:
  static constexpr std::size_t kZeros = 6;
  static constexpr int kZeroGain = 128;
  static constexpr int kZeroLeak = 32640;  // Q15, as the next two
  static constexpr int kPoleLeaks[] = {32640, 32512};
  static constexpr int kPoleGains[] = {192, 128};
  static constexpr int kMostSecondPole = 12288;  // Q14
  static constexpr int kMostPoles = 15360;

  // Q15 x Q15. One of the factors is above -32768, so there is nothing to saturate.
  static constexpr int Product(int a, int b) noexcept { return (a * b) >> 15; }
  // 0 when two numbers have the same sign, else -1. 0 counts as positive.
  static constexpr int SignsDiffer(int a, int b) noexcept { return (a ^ b) >> 31; }
  // A number, or, for a sign of -1, its opposite.
  static constexpr int WithSign(int number, int sign) noexcept { return (number ^ sign) - sign; }

  void AdaptPoles(int partial) noexcept {
    using fixed_point::Saturate;
    const int fourfold = Saturate(4 * poles_[0]);
    const int sign = SignsDiffer(partial, partials_[0]);
    const int opposite = Saturate(WithSign(fourfold, ~sign));
    const int second = (opposite >> 7) +
                       WithSign(kPoleGains[1], SignsDiffer(partial, partials_[1])) +
                       Product(poles_[1], kPoleLeaks[1]);
    poles_[1] = std::clamp(second, -kMostSecondPole, kMostSecondPole);
    const int most = kMostPoles - poles_[1];
    const int first = WithSign(kPoleGains[0], sign) + Product(poles_[0], kPoleLeaks[0]);
    poles_[0] = std::clamp(first, -most, most);
  }

  // The zeros stay within 16 bits by themselves.
  int AdaptZeros(int difference) noexcept {
    const int gain = difference == 0 ? 0 : kZeroGain;
    int sum = 0;
    for (std::size_t i = kZeros; i-- > 0;) {
      const int sign = SignsDiffer(difference, doubled_[i]);
      zeros_[i] = Product(zeros_[i], kZeroLeak) + WithSign(gain, sign);
      doubled_[i] = i > 0 ? doubled_[i - 1] : 2 * difference;
      sum = fixed_point::Saturate(sum + Product(doubled_[i], zeros_[i]));
    }
    return sum;
  }

  std::array<int, kZeros> zeros_{};    // Q14
  std::array<int, kZeros> doubled_{};  // the differences, twice each, the newest first
  std::array<int, 2> poles_{};         // Q14
  std::array<int, 2> partials_{};      // differences with the zeros' part, the newest first
  int previousOutput_ = 0;             // twice the band's last sample
  int zeroPart_ = 0;
  int prediction_ = 0;
};

}  // namespace Quorvex::g722
