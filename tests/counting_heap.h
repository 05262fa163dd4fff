// A heap that counts, and that can run out.
#pragma once

#include <cstdlib>

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
    return std::malloc(bytes);
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
