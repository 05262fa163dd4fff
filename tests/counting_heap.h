// A heap that counts, and that can run out.
#pragma once

#include <cstdlib>
#include <cstring>

#include "support/allocator.h"

namespace tests {

/// Gives out memory until its budget is used up, and counts what is out.
class CountingHeap final : public Quorvex::Allocator {
 public:
  void* Allocate(std::size_t bytes) noexcept override {
    if (budget == 0) return nullptr;
    if (budget > 0) --budget;
    ++alive;
    ++allocations;
    void* const memory = std::malloc(bytes);
    // So that what is used before it was set stands out, in samples of 16 bits and of floats.
    if (memory != nullptr) std::memset(memory, 0x7F, bytes);
    return memory;
  }
  void Free(void* memory) noexcept override {
    if (memory != nullptr) --alive;
    std::free(memory);
  }
  int budget = -1;  // allocations; negative: no limit
  int alive = 0;
  long allocations = 0;
};

}  // namespace tests
