#include "codecs/engines/g723_1/high_pass.h"

#include <cstddef>

#include "codecs/engines/g723_1/arithmetic.h"

namespace Quorvex::g723_1 {

using namespace fixed_point;

void HighPass::Filter(const short* samples, bool isOn, Word* filtered) noexcept {
  constexpr Word kPole = 0x7F00;
  for (std::size_t n = 0; n < kFrameSamples; ++n) {
    if (!isOn) {
      filtered[n] = static_cast<Word>(samples[n] >> 1);
      continue;
    }
    // Two 16-bit numbers differ by less than 2^16.
    const Long rise = (Long{samples[n]} - last_) * 0x8000;
    output_ = LongAdd(rise, MultiplyLong(output_, kPole));
    last_ = samples[n];
    filtered[n] = Round(output_);
  }
}

}  // namespace Quorvex::g723_1
