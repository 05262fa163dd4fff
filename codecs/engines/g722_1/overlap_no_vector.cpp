// For processors without a vector variant of the overlap.
#include "codecs/engines/g722_1/overlap.h"

namespace Quorvex::g722_1 {

void WeighHalves(const fixed_point::Word* first, const fixed_point::Word* kept,
                 short* samples) noexcept {
  WeighHalvesPlain(first, kept, samples);
}

}  // namespace Quorvex::g722_1
