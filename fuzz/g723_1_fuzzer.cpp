// The engine of G.723.1: frames of speech at either rate, of silence, and of nothing.
#include "fuzz/fuzz_engine.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  return fuzz::FuzzEngine("IPP_G723.1", data, size);
}
