// The line spectral frequencies as a frame sends them: their residual of a prediction from the
// residuals of four frames before.
#pragma once

#include <array>

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g729a/frame.h"
#include "codecs/engines/g729a/lsf_tables.h"

namespace Quorvex::g729a {

/// What a frame sends of them.
struct LSFIndices {
  unsigned predictor = 0;  ///< 0 or 1
  unsigned first = 0;      ///< stage, 7 bits
  unsigned low = 0;        ///< second stage, 5 bits each
  unsigned high = 0;
};

class LSFPredictor {
 public:
  /// The frequencies that a frame's indices stand for. They become part of the memory.
  LineSpectrum Decode(const LSFIndices& indices) noexcept;
  /// Of a frame that was lost: those before once more.
  LineSpectrum Repeat() noexcept;

  /// The residual that would make these frequencies.
  LineSpectrum ResidualOf(const LineSpectrum& frequencies, unsigned predictor) const noexcept;

 private:
  void Push(const LineSpectrum& residual) noexcept;

  std::array<LineSpectrum, 4> residuals_ = {kStartFrequencies, kStartFrequencies, kStartFrequencies,
                                            kStartFrequencies};  // the newest first
  LineSpectrum last_ = kStartFrequencies;
  unsigned predictor_ = 0;
};

/// The residual that a frame's indices stand for, with gaps between the frequencies.
LineSpectrum ResidualFrom(const LSFIndices& indices) noexcept;

}  // namespace Quorvex::g729a
