#include "codecs/engines/g723_1/encoder.h"

namespace Quorvex::g723_1 {
std::size_t Encoder::Encode(const short*, unsigned char*) noexcept { return 0; }
}  // namespace Quorvex::g723_1
