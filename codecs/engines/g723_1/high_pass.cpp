#include "codecs/engines/g723_1/high_pass.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace Quorvex::g723_1 {

using namespace fixed_point;

void HighPass::Filter(const short* samples, bool isOn, Word* filtered) noexcept {
  constexpr Word kPole = 0x7F00;
  if (!isOn) {
    std::transform(samples, samples + kFrameSamples, filtered,
                   [](Word sample) { return static_cast<Word>(sample >> 1); });
    return;
  }
  Word last = last_;
  Long output = output_;
  for (std::size_t n = 0; n < kFrameSamples; ++n) {
    // Neither product saturates: two samples differ by less than 2^16, and the pole is below 1.
    const Long rise = (Long{samples[n]} - last) * 0x8000;
    output = LongAdd(rise, static_cast<Long>((std::int64_t{output} * kPole) >> 15));
    last = samples[n];
    filtered[n] = Round(output);
  }
  last_ = last;
  output_ = output;
}

}  // namespace Quorvex::g723_1
