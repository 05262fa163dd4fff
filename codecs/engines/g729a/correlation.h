// Sums of products of subframes, as the encoder's searches need them.
#pragma once

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g729a/frame.h"

namespace Quorvex::g729a {

struct Sum {
  fixed_point::Long value = 0;
  bool saturated = false;  ///< by one product or more
};

/// Correlations of one subframe with others.
class Correlator {
 public:
  /// @param samples  kept as a reference.
  explicit Correlator(const Subframe& samples) noexcept;

  /// start + 2 (samples[0] others[0] + samples[1] others[1] + ...), each step saturating.
  /// @param start  0 or 1.
  Sum With(const fixed_point::Word* others, fixed_point::Long start = 0) const noexcept;
  Sum With(const Subframe& others, fixed_point::Long start = 0) const noexcept {
    return With(others.data(), start);
  }

 private:
  const Subframe& samples_;
  fixed_point::Long sumOfMagnitudes_;
};

/// A number with all its bits in use: value / 2^shift.
struct Scaled {
  fixed_point::Word value = 0;
  int shift = 0;
};

/// The upper half of a sum, rounded, after its norm.
Scaled Normalize(fixed_point::Long sum) noexcept;

}  // namespace Quorvex::g729a
