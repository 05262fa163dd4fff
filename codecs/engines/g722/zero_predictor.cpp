// The zeros, a difference at a time.
#include "codecs/engines/g722/zero_predictor.h"

namespace Quorvex::g722 {
namespace {

using fixed_point::Saturate;
using fixed_point::Word;

constexpr int kZeroLeak = 32640;  // Q15

// The zeros stay within 16 bits by themselves. The sum saturates after each product, the oldest
// difference first.
Word AdaptZeros(ZeroPredictor& predictor, int difference) noexcept {
  const int gain = difference == 0 ? 0 : kZeroGain;
  int sum = 0;
  for (std::size_t i = kZeros; i-- > 0;) {
    Word& zero = predictor.zeros[i];
    Word& doubled = predictor.doubled[i];
    const int sign = (difference ^ doubled) >> 31;  // -1 when they differ; 0 counts as positive
    zero = static_cast<Word>(((zero * kZeroLeak) >> 15) + ((gain ^ sign) - sign));
    doubled = i > 0 ? predictor.doubled[i - 1] : static_cast<Word>(2 * difference);
    sum = Saturate(sum + ((doubled * zero) >> 15));
  }
  return static_cast<Word>(sum);
}

}  // namespace

void AdaptZerosPlain(ZeroPredictor& predictor, const Word* differences, std::size_t count,
                     Word* parts) noexcept {
  for (std::size_t i = 0; i < 2 * count; i += 2) parts[i] = AdaptZeros(predictor, differences[i]);
}

}  // namespace Quorvex::g722
