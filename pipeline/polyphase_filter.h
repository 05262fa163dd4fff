// A fixed rational polyphase filter: changes the sampling frequency of 16-bit audio by L/M, the
// reduced ratio of the two frequencies.
//
// Its impulse response is a windowed sinc of the distance d from an output sample, in input
// samples:
//
//     h(d) = c sinc(c d) I0(beta sqrt(1 - (d/H)^2)) / I0(beta)      for |d| < H, else 0
//     c = roll-off x min(1, L/M)        H = length / 2
//
// so its phase is linear and its delay is 0: an output sample at the time t, in input samples, is
// made of the input from floor(t) - H + 1 to floor(t) + H. The gain at 0 Hz is the normalisation.
#pragma once

#include <MediaAccessor/result_code.h>

#include <cstddef>
#include <cstdint>

#include "pipeline/aligned_floats.h"
#include "pipeline/frequency_ratio.h"
#include "pipeline/polyphase_kernel.h"

namespace Quorvex {

class WindowedSinc;

/// What a filter is to prefer. It is accepted and changes nothing: the one way that there is to
/// compute it is the fastest and the most accurate.
enum class PolyphaseHint { kNone, kFast, kAccurate };

struct PolyphaseDesign {
  static constexpr int kLongest = 4000;
  static constexpr int kMostFactor = 1024;
  static constexpr int kMostDivisor = 64;
  static constexpr double kMostBeta = 20;

  int inputFrequency = 0;  ///< Hz, at least 1
  /// Hz, at least 1; from the input frequency / kMostDivisor to the input frequency x kMostFactor
  int outputFrequency = 0;
  int length = 0;      ///< of the impulse response in input samples: even, 2 to kLongest
  double rollOff = 0;  ///< the -6 dB point in parts of the lower Nyquist frequency: above 0, to 1
  double kaiserBeta = 0;  ///< the parameter of the Kaiser window: 0 to kMostBeta
  PolyphaseHint hint = PolyphaseHint::kNone;
};

/// How the coefficients of a design are stored.
///
/// A row makes one output sample, and kPolyphaseRows rows in succession, a group, share a window of
/// the input, so that each has zeros where the others' response lies:
///
///     window   x x x x x x x x x x x x x x x x      steps x kPolyphaseStep input samples
///     row 0    0 h h h h h h h 0 0 0 0 0 0 0 0
///     row 1    0 0 0 h h h h h h h 0 0 0 0 0 0      M/L further
///
/// There is a row for each of the L phases, or a multiple of them: where L is small they are
/// repeated until rows come in whole groups and all windows begin at multiples of kPolyphaseStep.
///
/// Where that would take more than kMostBytes (frequencies such as 44,101 and 16,000 Hz), fewer
/// phases are stored, one row each, and an output sample is interpolated between those of four.
struct PolyphaseLayout {
  static constexpr std::size_t kMostBytes = std::size_t{512} * 1024;

  FrequencyRatio ratio;
  bool isInterpolated = false;
  std::int64_t half = 0;    ///< H
  std::int64_t phases = 0;  ///< when interpolated: stored for each input sample
  std::int64_t rows = 0;    ///< until the pattern begins again; when interpolated all
  std::int64_t period = 0;  ///< input samples until it does
  std::int64_t groups = 0;
  std::int64_t steps = 0;  ///< in a window
  bool isAligned = false;  ///< windows begin at multiples of kPolyphaseStep

  std::size_t Coefficients() const;
  /// The input sample at or before a row's output sample, and the first one of a group's window.
  std::int64_t RowSample(std::int64_t row) const;
  std::int64_t WindowSample(std::int64_t group) const;
};

class PolyphaseFilter {
 public:
  /// The kernels load up to so many input samples before and after those that an output sample is
  /// made of. Their values do not matter, but must be finite.
  static constexpr std::size_t kMargin = 256;

  PolyphaseFilter() = default;
  PolyphaseFilter(const PolyphaseFilter&) = delete;
  PolyphaseFilter& operator=(const PolyphaseFilter&) = delete;

  /// @param bytes  receives how much memory the filter of a design takes; 0 on failure.
  /// @return QVERR_OK; QVERR_BAD_STATE for a design outside its limits.
  static QVERRORCODE_TAG GetSize(const PolyphaseDesign& design, std::size_t& bytes) noexcept;

  /// Computes the filter, in place of an earlier one.
  /// @param kernel  who does the arithmetic: one of PolyphaseKernels(), null for the fastest.
  /// @return QVERR_OK; QVERR_BAD_STATE for a design outside its limits, nothing being allocated;
  ///         QVERR_CREATE_FAILED when memory runs out. After a failure there is no filter.
  QVERRORCODE_TAG Initialize(const PolyphaseDesign& design,
                             const PolyphaseKernel* kernel = nullptr) noexcept;

  /// Makes the output samples from the time `time` up to, not including, trunc(time) + length.
  ///
  /// A stream begins at the time H + 1, with as many zeros before. From one pass to the next its
  /// input may be moved; as long as that is by multiples of kPolyphaseStep samples, its output does
  /// not depend, not even in the rounding, on how it is cut into passes.
  /// @param input   samples in 16-bit scale, with kMargin more on either side. Loading them is
  ///                fastest where the one at the time H + 1 is aligned to kPolyphaseStep floats.
  /// @param length  in input samples, below 2^31; 0 and less make nothing.
  /// @param normalisation  the gain at 0 Hz.
  /// @param time    in input samples from the beginning of `input`; receives the time of the next
  ///                output sample.
  /// @param output  receives the samples, rounded and clipped; null only advances the time.
  /// @param count   receives the number of output samples: OutputCount(length, time).
  /// @return QVERR_OK; QVERR_BAD_STATE without a filter.
  QVERRORCODE_TAG Process(const float* input, std::int64_t length, double normalisation,
                          double& time, short* output, std::size_t& count) const noexcept;

  /// How many samples Process makes.
  std::size_t OutputCount(std::int64_t length, double time) const noexcept;

  /// H, in input samples; 0 without a filter.
  int Half() const noexcept { return static_cast<int>(layout_.half); }

 private:
  struct Pass;

  void StoreRows(const WindowedSinc& sinc) noexcept;
  void StoreGroups(const WindowedSinc& sinc) noexcept;
  void StoreSide(std::int64_t row, std::int64_t first, std::int64_t direction,
                 const double* response) noexcept;
  void MakeFromRows(const Pass& pass) const noexcept;
  void MakeFromGroups(const Pass& pass) const noexcept;
  void MakeFromGroup(const Pass& pass, std::int64_t group) const noexcept;
  std::int64_t RowAt(InputPosition position) const noexcept;

  PolyphaseLayout layout_;
  std::int64_t inverse_ = 0;  // of M modulo L: so many rows after the phase 0 comes the phase 1/L
  const PolyphaseKernel* kernel_ = nullptr;  // null: there is no filter
  AlignedFloats memory_;
  float* coefficients_ = nullptr;  // in memory_
};

}  // namespace Quorvex
