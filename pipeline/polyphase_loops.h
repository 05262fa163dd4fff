// The loops of a polyphase kernel, for one kind of vector. To be included by the kernels alone.
//
// A block of kPolyphaseRows x windows sums is held in registers: in each step every loaded vector
// of coefficients serves all windows, and every loaded vector of input all rows.
#pragma once

#include "pipeline/polyphase_kernel.h"

namespace Quorvex {

/// What a kernel supplies: `Vector` with
///     static constexpr std::size_t kLanes            floats in a vector, a divisor of the step
///     static constexpr std::size_t kMostWindows      how many windows' sums fit the registers
///     static Vector Zero()
///     static Vector Load(const float*)               aligned as it comes
///     static Vector MultiplyAdd(Vector a, Vector b, Vector sum)
///     static void Store(const Vector (&sums)[kPolyphaseRows], float gain, short* output)
///                                                    adds up the lanes, rounds, clips
///     static float Sum(Vector)                       of the lanes
///     static short Round(float)
template <class Vector, std::size_t kWindows>
void FilterWindowBlock(const PolyphaseWindows& windows, std::size_t first) noexcept {
  Vector sums[kWindows][kPolyphaseRows];
  for (auto& window : sums) {
    for (Vector& sum : window) sum = Vector::Zero();
  }
  const float* coefficients = windows.coefficients;
  const float* input = windows.window + first * windows.windowDistance;
  for (std::size_t step = 0; step < windows.steps; ++step) {
    for (std::size_t lane = 0; lane < kPolyphaseStep; lane += Vector::kLanes) {
      Vector samples[kWindows];
      for (std::size_t w = 0; w < kWindows; ++w) {
        samples[w] = Vector::Load(input + w * windows.windowDistance + lane);
      }
      for (std::size_t row = 0; row < kPolyphaseRows; ++row) {
        const Vector taps = Vector::Load(coefficients + row * kPolyphaseStep + lane);
        for (std::size_t w = 0; w < kWindows; ++w) {
          sums[w][row] = Vector::MultiplyAdd(taps, samples[w], sums[w][row]);
        }
      }
    }
    coefficients += kPolyphaseRows * kPolyphaseStep;
    input += kPolyphaseStep;
  }
  for (std::size_t w = 0; w < kWindows; ++w) {
    Vector::Store(sums[w], windows.gain, windows.output + (first + w) * windows.outputDistance);
  }
}

template <class Vector>
void FilterWindows(const PolyphaseWindows& windows) noexcept {
  constexpr std::size_t kMost = Vector::kMostWindows;
  static_assert(kMost == 2 || kMost == 3);
  std::size_t done = 0;
  for (; done + kMost <= windows.count; done += kMost) {
    FilterWindowBlock<Vector, kMost>(windows, done);
  }
  if (kMost == 3 && windows.count - done == 2) {
    FilterWindowBlock<Vector, 2>(windows, done);
  } else if (done < windows.count) {
    FilterWindowBlock<Vector, 1>(windows, done);
  }
}

template <class Vector>
short FilterBetween(const PolyphaseBetween& between) noexcept {
  const float* const first = between.coefficients;
  const float* const second = first + between.steps * kPolyphaseStep;
  // Sums of even and odd steps, since a multiply-add waits for the one before.
  Vector sums[2][2] = {{Vector::Zero(), Vector::Zero()}, {Vector::Zero(), Vector::Zero()}};
  for (std::size_t i = 0; i < between.steps * kPolyphaseStep; i += Vector::kLanes) {
    auto& sum = sums[i / Vector::kLanes % 2];
    const Vector samples = Vector::Load(between.window + i);
    sum[0] = Vector::MultiplyAdd(Vector::Load(first + i), samples, sum[0]);
    sum[1] = Vector::MultiplyAdd(Vector::Load(second + i), samples, sum[1]);
  }
  const float low = Vector::Sum(sums[0][0]) + Vector::Sum(sums[1][0]);
  const float high = Vector::Sum(sums[0][1]) + Vector::Sum(sums[1][1]);
  return Vector::Round((low + between.weight * (high - low)) * between.gain);
}

}  // namespace Quorvex
