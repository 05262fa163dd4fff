// RecursiveLock: a lock with a time limit that its owner may take again.
#pragma once

#include <atomic>
#include <cstdint>
#include <limits>

namespace Quorvex {

/// How long a thread sleeps between failed tries: 0 ms for the first 100, 1 ms for the next 100,
/// and so on to 10 ms, which stays. Only these nominal milliseconds count against the limit.
class LockBackOff {
 public:
  /// @param limit  in milliseconds; above 0, or kWaitForever or negative for none.
  explicit LockBackOff(int limit) noexcept;

  /// After a failed try: false when the limit is used up, otherwise how long to sleep.
  bool Next(int& sleepMilliseconds) noexcept;

 private:
  bool endless_;
  int remaining_;
  int failedTries_ = 0;
};

/// A reader/writer lock that is tried and never waited for: one number, without a system call. (The
/// one that MinGW's C++ library offers lets two threads in when both are its first.)
class SlimLock {
 public:
  bool TryLock() noexcept {
    int expected = 0;
    return holders_.compare_exchange_strong(expected, kExclusive, std::memory_order_acquire);
  }
  void Unlock() noexcept { holders_.store(0, std::memory_order_release); }

  bool TryLockShared() noexcept {
    int holders = holders_.load(std::memory_order_relaxed);
    while (holders != kExclusive) {
      if (holders_.compare_exchange_weak(holders, holders + 1, std::memory_order_acquire)) {
        return true;
      }
    }
    return false;
  }
  void UnlockShared() noexcept { holders_.fetch_sub(1, std::memory_order_release); }

 private:
  static constexpr int kExclusive = -1;

  std::atomic<int> holders_{0};
};

/// A recursive lock, owned by a thread with a recursion count, with a shared form beside it. Any
/// thread.
class RecursiveLock {
 public:
  static constexpr int kWaitForever = std::numeric_limits<int>::max();

  /// Takes the lock. The owner gets it again at once, whatever the limit. A limit of 0 fails at
  /// once, without a try, for anybody else; a negative one, or kWaitForever, waits as long as it
  /// takes.
  bool Acquire(int limitMilliseconds) noexcept;

  /// Gives one Acquire back. False, with nothing changed, unless the calling thread is the owner.
  bool Release() noexcept;

  /// Takes the lock shared, under the same limits. For the owner it counts as one more Acquire.
  bool AcquireShared(int limitMilliseconds) noexcept;

  /// Gives one AcquireShared back. Call it only after one.
  void ReleaseShared() noexcept;

 private:
  bool IsOwner() const noexcept;

  SlimLock lock_;
  std::atomic<std::uintptr_t> owner_{0};  // 0: nobody
  int count_ = 0;                         // touched by the owner only
};

/// Holds a RecursiveLock for a scope, if it could be had within the limit.
class RecursiveLockGuard {
 public:
  RecursiveLockGuard(RecursiveLock& lock, int limitMilliseconds) noexcept
      : lock_(lock), held_(lock.Acquire(limitMilliseconds)) {}
  ~RecursiveLockGuard() {
    if (held_) lock_.Release();
  }
  RecursiveLockGuard(const RecursiveLockGuard&) = delete;
  RecursiveLockGuard& operator=(const RecursiveLockGuard&) = delete;

  explicit operator bool() const noexcept { return held_; }

 private:
  RecursiveLock& lock_;
  bool held_;
};

}  // namespace Quorvex
