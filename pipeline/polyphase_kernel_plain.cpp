// The polyphase kernel in plain code, four lanes at a time as compilers like it, and the list of
// those that this processor runs.
#include <algorithm>
#include <array>
#include <cmath>

#include "pipeline/polyphase_loops.h"

namespace Quorvex {
namespace {

struct PlainVector {
  static constexpr std::size_t kLanes = 4;
  static constexpr std::size_t kMostWindows = 2;

  static PlainVector Load(const float* values) {
    return {{values[0], values[1], values[2], values[3]}};
  }
  static PlainVector MultiplyAdd(const PlainVector& a, const PlainVector& b, PlainVector sum) {
    for (std::size_t i = 0; i < kLanes; ++i) sum.lanes[i] += a.lanes[i] * b.lanes[i];
    return sum;
  }
  static PlainVector Broadcast(float value) { return {{value, value, value, value}}; }
  static float Sum(const PlainVector& v) {
    return (v.lanes[0] + v.lanes[1]) + (v.lanes[2] + v.lanes[3]);
  }
  static short Round(float value) {
    return static_cast<short>(std::lrint(std::clamp(value, -32'768.0F, 32'767.0F)));
  }
  static void Store(const PolyphaseSums<PlainVector>& sums, float gain, short* output) {
    for (const PlainVector& sum : sums) *output++ = Round(Sum(sum) * gain);
  }

  std::array<float, kLanes> lanes = {};
};

constexpr PolyphaseKernel kPlain = {"plain", []() noexcept { return true; },
                                    FilterWindows<PlainVector>, FilterInterpolated<PlainVector>};

struct KernelList {
  KernelList() {
    for (const PolyphaseKernel* kernel : PolyphaseVectorKernels()) {
      if (kernel->isSupported()) kernels[count++] = kernel;
    }
    kernels[count++] = &kPlain;
  }
  std::array<const PolyphaseKernel*, kMostPolyphaseVectorKernels + 1> kernels{};
  std::size_t count = 0;
};

}  // namespace

std::span<const PolyphaseKernel* const> PolyphaseKernels() noexcept {
  static const KernelList list;
  return std::span(list.kernels).first(list.count);
}

}  // namespace Quorvex
