// CFTarray: the growable array behind every sample and byte buffer.
#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

#include "support/allocator.h"

namespace Quorvex {

/// A growable array that reports a failed growth instead of throwing. New elements of a trivial
/// type are left uninitialised: a buffer is about to be filled.
///
/// Growing to n elements beyond the capacity allocates
///     (n / step + 1) x step   when step > 1 and (n > step or the second flag is set),
///     n                       otherwise,
/// and, when the first flag is set, then doubles the step up to the largest step.
template <class Element>
class CFTarray {
  static_assert(std::is_nothrow_move_constructible_v<Element> &&
                std::is_nothrow_default_constructible_v<Element>);

 public:
  static constexpr std::size_t kDefaultStep = 4096;

  /// Takes its memory from the allocator that is current now.
  CFTarray() noexcept : allocator_(CurrentAllocator()) {}
  ~CFTarray() { Reset(); }
  /// Takes the elements over; `other` is left empty.
  CFTarray(CFTarray&& other) noexcept
      : allocator_(other.allocator_),
        data_(std::exchange(other.data_, nullptr)),
        count_(std::exchange(other.count_, 0)),
        capacity_(std::exchange(other.capacity_, 0)),
        step_(other.step_),
        largestStep_(other.largestStep_),
        doubling_(other.doubling_),
        alwaysStep_(other.alwaysStep_) {}
  CFTarray(const CFTarray&) = delete;
  CFTarray& operator=(const CFTarray&) = delete;

  /// Sets how the array grows; a step of 0 counts as 1. The flags: `doubling` doubles the step
  /// after each growth, `alwaysStep` rounds small sizes up to the step too.
  void SetGrowth(std::size_t step, std::size_t largestStep, bool doubling,
                 bool alwaysStep) noexcept {
    step_ = std::max<std::size_t>(step, 1);
    largestStep_ = std::max(largestStep, step_);
    doubling_ = doubling;
    alwaysStep_ = alwaysStep;
  }

  Element* Data() noexcept { return data_; }
  const Element* Data() const noexcept { return data_; }
  std::size_t Count() const noexcept { return count_; }
  std::size_t Capacity() const noexcept { return capacity_; }
  bool IsEmpty() const noexcept { return count_ == 0; }
  Element& operator[](std::size_t index) noexcept { return data_[index]; }
  const Element& operator[](std::size_t index) const noexcept { return data_[index]; }

  /// Makes room for `count` elements. False, with the array unchanged, when there is no memory.
  bool Reserve(std::size_t count) noexcept {
    if (count <= capacity_) return true;
    const std::size_t capacity = GrownCapacity(count);
    if (capacity < count || capacity > std::numeric_limits<std::size_t>::max() / sizeof(Element)) {
      return false;
    }
    auto* grown = static_cast<Element*>(allocator_.Allocate(capacity * sizeof(Element)));
    if (grown == nullptr) return false;
    std::uninitialized_move_n(data_, count_, grown);
    std::destroy_n(data_, count_);
    allocator_.Free(data_);
    data_ = grown;
    capacity_ = capacity;
    if (doubling_) step_ = step_ > largestStep_ / 2 ? largestStep_ : step_ * 2;
    return true;
  }

  /// Sets the number of elements. False, with the array unchanged, when there is no memory.
  bool Resize(std::size_t count) noexcept {
    if (!Reserve(count)) return false;
    if (count > count_) {
      std::uninitialized_default_construct_n(data_ + count_, count - count_);
    } else {
      std::destroy_n(data_ + count, count_ - count);
    }
    count_ = count;
    return true;
  }

  /// Appends one element. False, with the array unchanged, when there is no memory.
  bool Append(Element element) noexcept {
    if (!Reserve(count_ + 1)) return false;
    new (data_ + count_) Element(std::move(element));
    ++count_;
    return true;
  }

  /// Removes every element and keeps the memory.
  void Clear() noexcept {
    std::destroy_n(data_, count_);
    count_ = 0;
  }

  /// Removes every element and gives the memory back.
  void Reset() noexcept {
    Clear();
    allocator_.Free(data_);
    data_ = nullptr;
    capacity_ = 0;
  }

 private:
  std::size_t GrownCapacity(std::size_t count) const noexcept {
    const bool stepped = step_ > 1 && (count > step_ || alwaysStep_);
    return stepped ? (count / step_ + 1) * step_ : count;
  }

  Allocator& allocator_;
  Element* data_ = nullptr;
  std::size_t count_ = 0;
  std::size_t capacity_ = 0;
  std::size_t step_ = kDefaultStep;
  std::size_t largestStep_ = kDefaultStep;
  bool doubling_ = false;    // the first flag
  bool alwaysStep_ = false;  // the second flag
};

}  // namespace Quorvex
