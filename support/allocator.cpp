// The layout of an allocated object: a prefix that names its allocator, then the object.
//
//     | Prefix: Allocator* | padding to max_align_t | object ... |
#include "support/allocator.h"

#include <cstdlib>

namespace Quorvex {
namespace {

class MallocHeap final : public Allocator {
 public:
  void* Allocate(std::size_t bytes) noexcept override { return std::malloc(bytes > 0 ? bytes : 1); }
  void Free(void* memory) noexcept override { std::free(memory); }
};

constinit MallocHeap globalHeap;
constinit thread_local Allocator* currentAllocator = nullptr;

struct alignas(std::max_align_t) Prefix {
  Allocator* owner;
};

}  // namespace

Allocator& GlobalHeap() noexcept { return globalHeap; }

Allocator& CurrentAllocator() noexcept {
  return currentAllocator != nullptr ? *currentAllocator : globalHeap;
}

ScopedAllocator::ScopedAllocator(Allocator* allocator) noexcept : previous_(currentAllocator) {
  currentAllocator = allocator;
}

ScopedAllocator::~ScopedAllocator() { currentAllocator = previous_; }

void* AllocatedObject::operator new(std::size_t bytes) noexcept {
  Allocator& owner = CurrentAllocator();
  void* memory = owner.Allocate(sizeof(Prefix) + bytes);
  if (memory == nullptr) return nullptr;
  auto* const prefix = static_cast<Prefix*>(memory);
  prefix->owner = &owner;
  return prefix + 1;
}

void AllocatedObject::operator delete(void* memory) noexcept {
  if (memory == nullptr) return;
  Prefix* prefix = static_cast<Prefix*>(memory) - 1;
  prefix->owner->Free(prefix);
}

}  // namespace Quorvex
