// The engine of G.722.
#include "fuzz/fuzz_engine.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  return fuzz::FuzzEngine("IPP_G722", data, size);
}
