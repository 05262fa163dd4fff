// Two filters of twelve taps over a frame. The sizes of all taps together are less than 2^15, so no
// sum leaves 32 bits.
#include "codecs/engines/g722/quadrature_mirror_filter.h"

#include <algorithm>

#include "codecs/engines/g722/g722_tables.h"

namespace Quorvex::g722 {
namespace {

constexpr std::size_t kTaps = kMirrorTaps.size() / 2;

// sums[n] = the taps `offset`, offset + 2, ... times the samples n + kTaps - 1, n + kTaps - 2, ...
void Filter(const Word* samples, std::size_t offset, Long* sums) noexcept {
  std::fill_n(sums, QuadratureMirrorFilter::kPairs, Long{0});
  for (std::size_t i = 0; i < kTaps; ++i) {
    const Long tap = kMirrorTaps[2 * (kTaps - 1 - i) + offset];
    for (std::size_t n = 0; n < QuadratureMirrorFilter::kPairs; ++n) {
      sums[n] += tap * samples[n + i];
    }
  }
}

}  // namespace

void QuadratureMirrorFilter::Run(Long* even, Long* odd) noexcept {
  Filter(second_.data(), 0, even);
  Filter(first_.data(), 1, odd);
  std::copy_n(first_.data() + kPairs, kHistory, first_.data());
  std::copy_n(second_.data() + kPairs, kHistory, second_.data());
}

}  // namespace Quorvex::g722
