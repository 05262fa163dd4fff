// For processors without a vector variant of the zeros.
#include "codecs/engines/g722/zero_predictor.h"

namespace Quorvex::g722 {

void AdaptZeros(ZeroPredictor& predictor, const fixed_point::Word* differences, std::size_t count,
                fixed_point::Word* parts) noexcept {
  AdaptZerosPlain(predictor, differences, count, parts);
}

}  // namespace Quorvex::g722
