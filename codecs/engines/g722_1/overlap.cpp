#include "codecs/engines/g722_1/overlap.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "codecs/engines/g722_1/synthesis_window.h"

namespace Quorvex::g722_1 {
namespace {

using fixed_point::Long;
using fixed_point::Saturate;
using fixed_point::Word;

constexpr std::size_t kHalf = kFrameSamples / 2;

// Two places of the window that are mirrored are together at most 25590, so two products stay below
// 2^30 and only the shift of their doubled sum can saturate, which is the same as saturating in the
// end. The codec's samples have 14 bits.
short Sample(Long sum) noexcept { return static_cast<short>(Saturate((sum + 0x1000) >> 13) & ~3); }

constexpr std::array<Word, kHalf> kRising = [] {
  std::array<Word, kHalf> result{};
  std::copy_n(kSynthesisWindow.begin(), kHalf, result.begin());
  return result;
}();
constexpr std::array<Word, kHalf> kFalling = [] {
  std::array<Word, kHalf> result{};
  std::copy_n(kSynthesisWindow.rbegin(), kHalf, result.begin());
  return result;
}();

}  // namespace

// The lapped transform of a frame is mirrored: about a quarter of its length in the first half of
// the window, about three quarters, with the sign changed, in the second.
void Overlap::Add(const Samples& transformed, short* samples) noexcept {
  std::array<Word, kHalf> mirrored;
  std::array<Word, kHalf> back;
  std::copy_n(transformed.rbegin() + kHalf, kHalf, mirrored.begin());
  for (std::size_t i = 0; i < kHalf; ++i) {
    samples[i] = Sample(Long{kRising[i]} * mirrored[i] + Long{kFalling[i]} * kept_[i]);
    back[i] = Sample(Long{kFalling[i]} * mirrored[i] - Long{kRising[i]} * kept_[i]);
  }
  std::ranges::reverse_copy(back, samples + kHalf);
  std::copy_n(transformed.begin() + kHalf, kHalf, kept_.begin());
}

}  // namespace Quorvex::g722_1
