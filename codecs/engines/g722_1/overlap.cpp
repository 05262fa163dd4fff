#include "codecs/engines/g722_1/overlap.h"

#include <algorithm>
#include <cstddef>

#include "codecs/engines/g722_1/synthesis_window.h"

namespace Quorvex::g722_1 {
namespace {

using fixed_point::Long;
using fixed_point::Saturate;

constexpr std::size_t kHalf = kFrameSamples / 2;

// Two places of the window that are mirrored are together at most 25590, so two products stay below
// 2^30 and only the shift of their doubled sum can saturate, which is the same as saturating in the
// end. The codec's samples have 14 bits.
short Sample(Long sum) noexcept { return static_cast<short>(Saturate((sum + 0x1000) >> 13) & ~3); }

}  // namespace

void Overlap::Add(const Samples& transformed, short* samples) noexcept {
  const auto& window = kSynthesisWindow;
  std::array<fixed_point::Word, kHalf> mirrored;
  std::ranges::reverse_copy(transformed.begin(), transformed.begin() + kHalf, mirrored.begin());
  for (std::size_t i = 0; i < kHalf; ++i) {
    samples[i] =
        Sample(Long{window[i]} * mirrored[i] + Long{window[kFrameSamples - 1 - i]} * kept_[i]);
  }
  for (std::size_t i = 0; i < kHalf; ++i) {
    samples[kHalf + i] = Sample(Long{window[kHalf + i]} * transformed[i] -
                                Long{window[kHalf - 1 - i]} * kept_[kHalf - 1 - i]);
  }
  std::copy_n(transformed.begin() + kHalf, kHalf, kept_.begin());
}

}  // namespace Quorvex::g722_1
