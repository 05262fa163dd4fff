// The vector kernels of x86-64 processors, each in a file of its own.
#pragma once

#include "pipeline/polyphase_kernel.h"

namespace Quorvex {

extern const PolyphaseKernel kPolyphaseSSE2;
extern const PolyphaseKernel kPolyphaseAVX2;
extern const PolyphaseKernel kPolyphaseAVX512;

}  // namespace Quorvex
