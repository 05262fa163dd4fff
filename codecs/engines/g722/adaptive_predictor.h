// The adaptive predictor of a band: six zeros over the quantised differences, two poles over the
// band's own past. Both bands have the same.
//
// A decoder goes on by a frame with the zeros of each band, then with the poles of both; an encoder
// by a sample.
#pragma once

#include "codecs/engines/g722/pole_predictor.h"
#include "codecs/engines/g722/zero_predictor.h"

namespace Quorvex::g722 {

struct AdaptivePredictor {
  ZeroPredictor zeros;
  PolePredictor poles;

  /// @param difference  what the quantiser made of the sample less its prediction: within 10,228,
  ///                    since no band's step times its highest level is more.
  void Update(Word difference) noexcept {
    Word zeroPart = 0;
    AdaptZeros(zeros, &difference, 1, &zeroPart);
    poles.Update(difference, zeroPart);
  }
};

}  // namespace Quorvex::g722
