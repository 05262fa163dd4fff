// The encoder of G.729A with any samples, and the decoder with its frames.
//
//     unused8 modes8 rate16 { sample16 }     of which raw samples are an input, too
#include <algorithm>

#include "fuzz/fuzz_engine.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // 50 frames: more would take its time from other inputs.
  constexpr std::size_t kMost = 4 + 50 * 160;
  if (size == 0) return 0;
  size = std::min(size, kMost);
  return fuzz::FuzzEngine<&fuzz::EngineRun::CodeStep>("IPP_G729A", data + 1, size - 1);
}
