// Who owns the lock, and how long the others try for it.
#include "support/recursive_lock.h"

#include <algorithm>

#include "platform/thread.h"

namespace Quorvex {
namespace {

constexpr int kTriesPerStep = 100;
constexpr int kLongestSleep = 10;  // ms

template <class Try>
bool TryUntil(int limit, const Try& attempt) noexcept {
  if (limit == 0) return false;
  LockBackOff backOff(limit);
  while (!attempt()) {
    int sleep = 0;
    if (!backOff.Next(sleep)) return false;
    platform::SleepMilliseconds(sleep);
  }
  return true;
}

}  // namespace

LockBackOff::LockBackOff(int limit) noexcept
    : endless_(limit < 0 || limit == RecursiveLock::kWaitForever), remaining_(limit) {}

bool LockBackOff::Next(int& sleepMilliseconds) noexcept {
  if (!endless_ && remaining_ <= 0) return false;
  sleepMilliseconds = failedTries_ / kTriesPerStep;
  if (sleepMilliseconds < kLongestSleep) ++failedTries_;
  if (!endless_) remaining_ -= sleepMilliseconds;
  return true;
}

bool RecursiveLock::IsOwner() const noexcept {
  // Only the calling thread itself can have stored its own mark, so no ordering is needed.
  const std::uintptr_t owner = owner_.load(std::memory_order_relaxed);
  return owner != 0 && owner == platform::CurrentThreadMark();
}

bool RecursiveLock::Acquire(int limitMilliseconds) noexcept {
  if (!IsOwner()) {
    if (!TryUntil(limitMilliseconds, [this] { return lock_.TryLock(); })) return false;
    owner_.store(platform::CurrentThreadMark(), std::memory_order_relaxed);
  }
  ++count_;
  return true;
}

bool RecursiveLock::Release() noexcept {
  if (!IsOwner()) return false;
  if (--count_ == 0) {
    owner_.store(0, std::memory_order_relaxed);
    lock_.Unlock();
  }
  return true;
}

bool RecursiveLock::AcquireShared(int limitMilliseconds) noexcept {
  if (IsOwner()) return Acquire(limitMilliseconds);
  return TryUntil(limitMilliseconds, [this] { return lock_.TryLockShared(); });
}

void RecursiveLock::ReleaseShared() noexcept {
  if (!Release()) lock_.UnlockShared();
}

}  // namespace Quorvex
