// The polyphase kernels of x86-64 processors.
#include "pipeline/polyphase_kernel_x86.h"

namespace Quorvex {

std::span<const PolyphaseKernel* const> PolyphaseVectorKernels() noexcept {
  static constexpr const PolyphaseKernel* kKernels[] = {&kPolyphaseAVX512, &kPolyphaseAVX2,
                                                        &kPolyphaseSSE2};
  static_assert(std::size(kKernels) <= kMostPolyphaseVectorKernels);
  return kKernels;
}

}  // namespace Quorvex
