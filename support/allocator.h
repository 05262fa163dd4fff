// Where objects and buffers get their memory.
//
// Every thread has a current allocator: a private heap that somebody set, or none, which means the
// global heap. An object whose class derives from AllocatedObject is allocated from it, remembers
// it, and goes back to it wherever it is deleted.
#pragma once

#include <cstddef>

namespace Quorvex {

/// A heap. Nothing here throws: Allocate returns null when there is no memory.
class Allocator {
 public:
  /// Memory aligned for every fundamental type.
  virtual void* Allocate(std::size_t bytes) noexcept = 0;
  /// Takes memory of this allocator back; null is allowed.
  virtual void Free(void* memory) noexcept = 0;

 protected:
  ~Allocator() = default;
};

/// The heap that everybody shares. Any thread.
Allocator& GlobalHeap() noexcept;

/// The calling thread's allocator: the one that a ScopedAllocator set, else the global heap.
Allocator& CurrentAllocator() noexcept;

/// Makes an allocator the calling thread's current one until the end of the scope; null stands for
/// the global heap.
class ScopedAllocator {
 public:
  explicit ScopedAllocator(Allocator* allocator) noexcept;
  ~ScopedAllocator();
  ScopedAllocator(const ScopedAllocator&) = delete;
  ScopedAllocator& operator=(const ScopedAllocator&) = delete;

 private:
  Allocator* previous_;
};

/// Base of the implementation classes: `new` takes the current allocator and yields null when it
/// has no memory; `delete` gives the memory back to the allocator that it came from.
class AllocatedObject {
 public:
  static void* operator new(std::size_t bytes) noexcept;
  static void operator delete(void* memory) noexcept;

 protected:
  ~AllocatedObject() = default;
};

}  // namespace Quorvex
