// The short-term prediction of a frame: the filter that the samples around it suggest.
#pragma once

#include <cstddef>

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g729a/frame.h"

namespace Quorvex::g729a {

/// Samples that are looked at: 120 before the frame, the frame, and 40 behind.
inline constexpr std::size_t kAnalysisSamples = 240;

class LinearPrediction {
 public:
  /// @param samples  kAnalysisSamples, the oldest first.
  /// @return A(z); that of the frame before if the samples give none that is safely stable.
  const Filter& Analyze(const fixed_point::Word* samples) noexcept;

 private:
  Filter last_ = {4096};
};

}  // namespace Quorvex::g729a
