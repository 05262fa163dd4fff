// The encoder of G.723.1 with any samples, in modes that change, and the decoder with its frames.
//
//     unused8 modes8 rate16 { switch8 modes8 sample16... }
//
// Raw samples are such an input, too.
#include <algorithm>

#include "fuzz/fuzz_engine.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // 10 frames: more would take its time from other inputs.
  constexpr std::size_t kMost = 4 + 10 * (2 + 480);
  if (size == 0) return 0;
  size = std::min(size, kMost);
  return fuzz::FuzzEngine<&fuzz::EngineRun::SwitchAndCodeStep>("IPP_G723.1", data + 1, size - 1);
}
