// For processors without a vector variant of the inverse transform.
#include "codecs/engines/g722_1/inverse_transform.h"

namespace Quorvex::g722_1 {

bool InverseTransformVector(const fixed_point::Word*, int, fixed_point::Word*) noexcept {
  return false;
}

}  // namespace Quorvex::g722_1
