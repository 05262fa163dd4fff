// The multiply-add loops of the polyphase filter, once for each set of vector instructions.
#pragma once

#include <cstddef>
#include <span>

namespace Quorvex {

/// Input samples are taken in steps of so many, and coefficients stand in memory in steps of as
/// many, aligned to their size.
inline constexpr std::size_t kPolyphaseStep = 8;

/// So many output samples in succession are made from one window of the input.
inline constexpr std::size_t kPolyphaseRows = 4;

/// Windows of the input that are multiplied with the same coefficients:
///
///     output[w x outputDistance + r] = gain x sum over i of
///         window[w x windowDistance + i] x coefficient (r, i)      rounded, clipped to 16 bits
struct PolyphaseWindows {
  const float* coefficients;  ///< [steps][kPolyphaseRows][kPolyphaseStep]
  std::size_t steps;
  const float* window;
  std::size_t windowDistance;
  std::size_t count;  ///< of windows
  float gain;
  short* output;  ///< kPolyphaseRows samples for each window
  std::size_t outputDistance;
};

/// One window that is multiplied with neighbouring rows of coefficients:
///
///     sum over r and i of weights[r] x window[i] x coefficient (r, i)     rounded, clipped
struct PolyphaseInterpolation {
  const float* coefficients;  ///< [kPolyphaseRows][steps x kPolyphaseStep]
  std::size_t steps;          ///< even
  const float* window;
  float weights[kPolyphaseRows];
};

/// All kernels give the same samples within 1. Each gives a sample the same value whatever samples
/// are made beside it.
struct PolyphaseKernel {
  const char* name;
  bool (*isSupported)() noexcept;  ///< by this processor
  void (*filterWindows)(const PolyphaseWindows& windows) noexcept;
  short (*filterInterpolated)(const PolyphaseInterpolation& interpolation) noexcept;
};

/// Every kernel that this processor runs, the fastest first.
std::span<const PolyphaseKernel* const> PolyphaseKernels() noexcept;

inline constexpr std::size_t kMostPolyphaseVectorKernels = 3;

/// The kernels of this build besides the plain one, the fastest first.
std::span<const PolyphaseKernel* const> PolyphaseVectorKernels() noexcept;

}  // namespace Quorvex
