// The loops of a polyphase kernel, for one kind of vector. To be included by the kernels alone,
// whose vectors are types of their own file, so that no other file shares what is compiled here.
//
// A block of kPolyphaseRows x windows sums is held in registers: in each step every loaded vector
// of coefficients serves all windows, and every loaded vector of input all rows.
#pragma once

#include <array>
#include <utility>

#include "pipeline/polyphase_kernel.h"

namespace Quorvex {

/// The sums of one window, row by row.
///
/// What a kernel supplies: `Vector`, whose default is zeros, with
///     static constexpr std::size_t kLanes            floats in a vector, a divisor of the step;
///                                                    for FilterInterpolated alone also twice it
///     static constexpr std::size_t kMostWindows      how many windows' sums fit the registers
///     static Vector Load(const float*)               aligned as it comes
///     static Vector MultiplyAdd(Vector a, Vector b, Vector sum)
///     static void Store(const PolyphaseSums<Vector>&, float gain, short* output)
///                                                    adds up the lanes, rounds, clips
///     static Vector Broadcast(float)                 to all lanes
///     static float Sum(Vector)                       of the lanes
///     static short Round(float)
template <class Vector>
using PolyphaseSums = std::array<Vector, kPolyphaseRows>;

template <class Vector, std::size_t... kWindow>
void FilterWindowBlock(const PolyphaseWindows& windows, std::size_t first,
                       std::index_sequence<kWindow...>) noexcept {
  PolyphaseSums<Vector> sums[] = {(static_cast<void>(kWindow), PolyphaseSums<Vector>{})...};
  const float* coefficients = windows.coefficients;
  const float* input = windows.window + first * windows.windowDistance;
  for (std::size_t step = 0; step < windows.steps; ++step) {
    for (std::size_t lane = 0; lane < kPolyphaseStep; lane += Vector::kLanes) {
      const Vector samples[] = {Vector::Load(input + kWindow * windows.windowDistance + lane)...};
      for (std::size_t row = 0; row < kPolyphaseRows; ++row) {
        const Vector taps = Vector::Load(coefficients + row * kPolyphaseStep + lane);
        ((sums[kWindow][row] = Vector::MultiplyAdd(taps, samples[kWindow], sums[kWindow][row])),
         ...);
      }
    }
    coefficients += kPolyphaseRows * kPolyphaseStep;
    input += kPolyphaseStep;
  }
  short* const output = windows.output + first * windows.outputDistance;
  (Vector::Store(sums[kWindow], windows.gain, output + kWindow * windows.outputDistance), ...);
}

/// PolyphaseKernel::filterWindows
template <class Vector>
void FilterWindows(const PolyphaseWindows& windows) noexcept {
  constexpr std::size_t kMost = Vector::kMostWindows;
  static_assert(kMost == 2 || kMost == 3);
  std::size_t done = 0;
  for (; done + kMost <= windows.count; done += kMost) {
    FilterWindowBlock<Vector>(windows, done, std::make_index_sequence<kMost>());
  }
  if (kMost == 3 && windows.count - done == 2) {
    FilterWindowBlock<Vector>(windows, done, std::make_index_sequence<2>());
  } else if (done < windows.count) {
    FilterWindowBlock<Vector>(windows, done, std::make_index_sequence<1>());
  }
}

template <class Vector, std::size_t... kRow>
short FilterInterpolatedRows(const PolyphaseInterpolation& interpolation,
                             std::index_sequence<kRow...>) noexcept {
  // Sums of even and of odd vectors, since a multiply-add waits for the one before.
  constexpr std::size_t kTurn = 2 * Vector::kLanes;
  static_assert(2 * kPolyphaseStep % Vector::kLanes == 0);
  const std::size_t length = interpolation.steps * kPolyphaseStep;
  Vector even[] = {(static_cast<void>(kRow), Vector{})...};
  Vector odd[] = {(static_cast<void>(kRow), Vector{})...};
  const auto add = [&](std::size_t at, Vector(&sums)[kPolyphaseRows]) {
    const Vector samples = Vector::Load(interpolation.window + at);
    const float* const taps = interpolation.coefficients + at;
    ((sums[kRow] = Vector::MultiplyAdd(Vector::Load(taps + kRow * length), samples, sums[kRow])),
     ...);
  };
  std::size_t at = 0;
  for (; at + kTurn <= length; at += kTurn) {
    add(at, even);
    add(at + Vector::kLanes, odd);
  }
  if (at < length) add(at, even);
  Vector sum{};
  const auto addWeighted = [&](std::size_t row, Vector part) {
    sum = Vector::MultiplyAdd(Vector::Broadcast(interpolation.weights[row]), part, sum);
  };
  ((addWeighted(kRow, even[kRow]), addWeighted(kRow, odd[kRow])), ...);
  return Vector::Round(Vector::Sum(sum));
}

/// PolyphaseKernel::filterInterpolated
template <class Vector>
short FilterInterpolated(const PolyphaseInterpolation& interpolation) noexcept {
  return FilterInterpolatedRows<Vector>(interpolation, std::make_index_sequence<kPolyphaseRows>());
}

}  // namespace Quorvex
