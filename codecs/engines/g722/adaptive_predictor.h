// The adaptive predictor of a band: six zeros over the quantised differences, two poles over the
// band's own past. Both bands have the same.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g722/zero_predictor.h"

namespace Quorvex::g722 {

using fixed_point::Word;

class AdaptivePredictor {
 public:
  /// Of the band's next sample.
  int Prediction() const noexcept { return prediction_; }

  /// What the zeros give after each of a frame's differences. Comes before Update for each.
  /// @param differences  what the quantiser made of the samples less their predictions: within
  ///                     10,228, since no band's step times its highest level is more.
  void AdaptZeros(const Word* differences, std::size_t count, Word* zeroParts) noexcept {
    g722::AdaptZeros(zeros_, differences, count, zeroParts);
  }

  /// Goes on by a sample.
  void Update(int difference, int zeroPart) noexcept {
    using fixed_point::Saturate;
    const int partial = difference + zeroPart_;  // of which the sign alone matters
    const int output = Saturate(2 * (difference + prediction_));
    AdaptPoles(partial);
    zeroPart_ = zeroPart;
    const int polePart = Saturate(Product(poles_[0], output) + Product(poles_[1], previousOutput_));
    prediction_ = Saturate(polePart + zeroPart_);
    partials_[1] = partials_[0];
    partials_[0] = partial;
    previousOutput_ = output;
  }

 private:
  static constexpr int kPoleLeaks[] = {32640, 32512};  // Q15
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
    const int sign = SignsDiffer(partial, partials_[0]);
    // Both saturations of the standard in one: they differ by one at most, which is shifted out.
    const int opposite = Saturate(WithSign(4 * poles_[0], ~sign));
    const int second = (opposite >> 7) +
                       WithSign(kPoleGains[1], SignsDiffer(partial, partials_[1])) +
                       Product(poles_[1], kPoleLeaks[1]);
    poles_[1] = std::clamp(second, -kMostSecondPole, kMostSecondPole);
    const int most = kMostPoles - poles_[1];
    const int first = WithSign(kPoleGains[0], sign) + Product(poles_[0], kPoleLeaks[0]);
    poles_[0] = std::clamp(first, -most, most);
  }

  ZeroPredictor zeros_;
  std::array<int, 2> poles_{};     // Q14
  std::array<int, 2> partials_{};  // differences with the zeros' part, the newest first
  int previousOutput_ = 0;         // twice the band's last sample
  int zeroPart_ = 0;
  int prediction_ = 0;
};

}  // namespace Quorvex::g722
