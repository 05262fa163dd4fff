// The linear prediction's filters. Signals are pointers to where they begin: kOrder samples before
// are the filter's memory.
#pragma once

#include <cstddef>

#include "codecs/engines/fixed_point.h"
#include "codecs/engines/g729a/frame.h"

namespace Quorvex::g729a {

/// A(z / factor): formants wider than those of A(z). @param factor  Q15.
Filter Expand(const Filter& filter, fixed_point::Word factor) noexcept;

/// What the prediction leaves: the samples through A(z). @param samples  with memory before.
/// @param count  a multiple of eight.
void Residual(const Filter& filter, const fixed_point::Word* samples, std::size_t count,
              fixed_point::Word* residual) noexcept;

/// The excitation through 1 / A(z). @param samples  with memory before; receives `count`; may be
/// the excitation itself. @return false if an operation saturated.
bool Synthesize(const Filter& filter, const fixed_point::Word* excitation, std::size_t count,
                fixed_point::Word* samples) noexcept;

}  // namespace Quorvex::g729a
