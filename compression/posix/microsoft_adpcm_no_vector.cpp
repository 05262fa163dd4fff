// For processors without a vector variant.
#include "compression/posix/microsoft_adpcm_block.h"

namespace Quorvex {

template <std::size_t kChannels>
std::size_t DecodeMicrosoftADPCMVector(MicrosoftADPCMGroup<kChannels>&, std::size_t) noexcept {
  return 0;
}
template std::size_t DecodeMicrosoftADPCMVector<1>(MicrosoftADPCMGroup<1>&, std::size_t) noexcept;
template std::size_t DecodeMicrosoftADPCMVector<2>(MicrosoftADPCMGroup<2>&, std::size_t) noexcept;

}  // namespace Quorvex
