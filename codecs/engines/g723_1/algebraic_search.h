// The four pulses of a subframe at 5.3 kbit/s.
#pragma once

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g723_1/frame.h"
#include "codecs/engines/g723_1/frame_bits.h"

namespace Quorvex::g723_1 {

/// How long a frame is searched: what a subframe does not need is left for the next.
class SearchBudget {
 public:
  int ForSubframe() noexcept { return tries_ += kTries; }
  void Spend(int tries) noexcept { tries_ -= tries; }

 private:
  static constexpr int kTries = 120;

  int tries_ = kTries;
};

/// @param lag      the subframe's own. @param target  what the pitch left.
/// @param budget   of the frame. @param indices  has its row of pitch gains; receives the rest.
void SearchAlgebraic(int lag, const Subframe& target, const Subframe& response,
                     SearchBudget& budget, SubframeIndices& indices) noexcept;

}  // namespace Quorvex::g723_1
