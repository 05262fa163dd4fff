// For processors without vector variants of the polyphase kernel.
#include "pipeline/polyphase_kernel.h"

namespace Quorvex {

std::span<const PolyphaseKernel* const> PolyphaseVectorKernels() noexcept { return {}; }

}  // namespace Quorvex
