// The recursive lock, with threads.
#include "support/recursive_lock.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

using Quorvex::LockBackOff;
using Quorvex::RecursiveLock;

TEST(RecursiveLock, BackOffCountsNominalMillisecondsOnly) {
  LockBackOff backOff(1000);
  std::vector<int> sleeps;
  for (int sleep = 0; backOff.Next(sleep);) sleeps.push_back(sleep);
  // 100 sleeps each of 0, 1, 2, 3 and 4 ms: 1,000 ms.
  ASSERT_EQ(sleeps.size(), 500U);
  for (std::size_t i = 0; i < sleeps.size(); ++i) EXPECT_EQ(sleeps[i], static_cast<int>(i / 100));

  for (const int limit : {-1, RecursiveLock::kWaitForever}) {
    LockBackOff endless(limit);
    int sleep = 0;
    for (int i = 0; i < 3000; ++i) {
      ASSERT_TRUE(endless.Next(sleep));
      EXPECT_EQ(sleep, std::min(i / 100, 10));
    }
  }
}

TEST(RecursiveLock, TheOwnerReentersAndEverybodyElseWaits) {
  RecursiveLock lock;
  EXPECT_FALSE(lock.Acquire(0)) << "a limit of 0 fails without a try, free or not";
  EXPECT_FALSE(lock.Release());
  EXPECT_TRUE(lock.Acquire(1));
  EXPECT_TRUE(lock.Acquire(0)) << "but the owner re-enters";
  EXPECT_TRUE(lock.AcquireShared(0));
  const auto elsewhere = [&lock](bool expected) {
    std::thread([&lock, expected] {
      EXPECT_EQ(lock.Acquire(1), expected);
      EXPECT_EQ(lock.Release(), expected);
    }).join();
  };
  elsewhere(false);
  lock.ReleaseShared();
  EXPECT_TRUE(lock.Release());
  elsewhere(false);
  EXPECT_TRUE(lock.Release());
  EXPECT_FALSE(lock.Release());
  elsewhere(true);
}

TEST(RecursiveLock, SharedHoldersKeepTheExclusiveFormOut) {
  RecursiveLock lock;
  EXPECT_FALSE(lock.AcquireShared(0));
  EXPECT_TRUE(lock.AcquireShared(1));
  std::thread([&lock] {
    EXPECT_TRUE(lock.AcquireShared(1));
    EXPECT_FALSE(lock.Acquire(1));
    lock.ReleaseShared();
  }).join();
  lock.ReleaseShared();
  EXPECT_TRUE(lock.Acquire(1));
  std::thread([&lock] { EXPECT_FALSE(lock.AcquireShared(1)); }).join();
  EXPECT_TRUE(lock.Release());
}

TEST(RecursiveLock, GuardsWhatSeveralThreadsChange) {
  // A new lock each time: its first users are to meet too.
  for (int round = 0; round < 50; ++round) {
    RecursiveLock lock;
    int counter = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
      threads.emplace_back([&] {
        for (int i = 0; i < 200; ++i) {
          const Quorvex::RecursiveLockGuard outer(lock, RecursiveLock::kWaitForever);
          const Quorvex::RecursiveLockGuard inner(lock, 0);
          ASSERT_TRUE(inner);
          ++counter;
        }
      });
    }
    for (std::thread& thread : threads) thread.join();
    ASSERT_EQ(counter, 800);
  }
}

}  // namespace
