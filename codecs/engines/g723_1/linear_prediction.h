// The filter that predicts a stretch of samples best, by their autocorrelation.
#pragma once

#include <array>
#include <cstddef>

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g723_1/frame.h"

namespace Quorvex::g723_1 {

/// The window of a subframe is centred on it.
inline constexpr std::size_t kWindowSamples = 180;

/// Of windowed samples, lags 0 to kOrder: values / 2^shift.
struct Autocorrelation {
  std::array<fixed_point::Word, kOrder + 1> values = {};
  int shift = 40;
};

/// @param samples  kWindowSamples.
Autocorrelation Correlate(const fixed_point::Word* samples) noexcept;

struct Prediction {
  Filter filter = {};           ///< Q13
  fixed_point::Word error = 0;  ///< energy that is left, in the scale of the autocorrelation
  bool isSine = false;          ///< nothing, or next to nothing, is left after two coefficients
};
Prediction Predict(const Autocorrelation& autocorrelation) noexcept;

/// Tells a sine from a voice, by 15 windows.
class SineDetector {
 public:
  void Add(const Prediction& prediction) noexcept;
  bool IsSine() const noexcept;

 private:
  unsigned windows_ = 0;  // a bit each, the newest lowest
};

}  // namespace Quorvex::g723_1
