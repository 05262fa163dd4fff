// The engine of G.729A: any ten bytes are a frame.
#include "fuzz/fuzz_engine.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  return fuzz::FuzzEngine("IPP_G729A", data, size);
}
