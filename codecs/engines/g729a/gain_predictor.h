// The gain of the fixed codebook, predicted from the four before.
#pragma once

#include <array>

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g729a/frame.h"

namespace Quorvex::g729a {

/// mantissa / 2^exponent.
struct PredictedGain {
  fixed_point::Word mantissa = 0;
  fixed_point::Word exponent = 0;
};

class GainPredictor {
 public:
  /// @param code  the code vector, sharpened, Q13.
  PredictedGain Predict(const Subframe& code) const noexcept;
  /// @param factor  what the predicted gain was multiplied with, Q13.
  void Update(fixed_point::Long factor) noexcept;
  /// After a subframe that was lost.
  void UpdateLost() noexcept;

 private:
  void Push(fixed_point::Word energy) noexcept;

  /// Errors of the prediction in dB, Q10, the newest first: -14 dB before the first.
  std::array<fixed_point::Word, 4> errors_ = {-14336, -14336, -14336, -14336};
};

/// The gain of the fixed codebook, Q1.
fixed_point::Word CodeGainOf(PredictedGain predicted, fixed_point::Long factor) noexcept;

}  // namespace Quorvex::g729a
