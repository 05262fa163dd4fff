// The lapped transform of a frame is mirrored: about a quarter of its length in the first half of
// the window, about three quarters, with the sign changed, in the second.
#include "codecs/engines/g722_1/overlap.h"

#include <algorithm>

#include "codecs/engines/g722_1/synthesis_window.h"

namespace Quorvex::g722_1 {
namespace {

using fixed_point::Long;
using fixed_point::Saturate;
using fixed_point::Word;

// Two places of the window that are mirrored are together at most 25590, so two products stay below
// 2^30 and only the shift of their doubled sum can saturate, which is the same as saturating in the
// end. The codec's samples have 14 bits.
short Sample(Long sum) noexcept { return static_cast<short>(Saturate((sum + 0x1000) >> 13) & ~3); }

}  // namespace

void WeighHalvesPlain(const Word* first, const Word* kept, short* samples) noexcept {
  for (std::size_t i = 0; i < kHalfFrame; ++i) {
    const Long rising = kSynthesisWindow[i];
    const Long falling = kSynthesisWindow[kFrameSamples - 1 - i];
    const Long mirrored = first[kHalfFrame - 1 - i];
    samples[i] = Sample(rising * mirrored + falling * kept[i]);
    samples[kFrameSamples - 1 - i] = Sample(falling * mirrored - rising * kept[i]);
  }
}

void Overlap::Add(const Samples& transformed, short* samples) noexcept {
  WeighHalves(transformed.data(), kept_.data(), samples);
  std::copy_n(transformed.begin() + kHalfFrame, kHalfFrame, kept_.begin());
}

}  // namespace Quorvex::g722_1
