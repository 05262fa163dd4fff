#include "codecs/engines/g723_1/decoder.h"

namespace Quorvex::g723_1 {
void Decoder::Decode(const CodedFrame&, short*) noexcept {}
}  // namespace Quorvex::g723_1
