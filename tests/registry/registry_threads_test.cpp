// The registry under several threads, and when its lock cannot be had.
#include <MediaAccessor/all.h>
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

#include "registry/factory_registry.h"
#include "tests/fake_media.h"
#include "tests/test_files.h"

namespace {

using namespace Quorvex;
using tests::FakeFactory;

TEST(RegistryThreads, EveryOperationFromEveryThread) {
  MediaAccessorRegistryClear();
  std::vector<FakeFactory> factories(4);
  for (FakeFactory& factory : factories) factory.format.extensions = {L"one", L"two"};
  std::atomic<int> opened{0};
  const std::string path = tests::Fixture("sox_alaw_stereo.wav");
  const auto work = [&](std::size_t thread) {
    for (int i = 0; i < 100; ++i) {
      const CMediaFileFactory* factory = nullptr;
      bool isDefault = false;
      char text[16];
      EXPECT_EQ(MediaAccessorRegistryAdd(&factories[thread]), QVERR_OK);
      EXPECT_EQ(MediaAccessorRegistrySetDefault(&factories[thread], "three"), QVERR_OK);
      EXPECT_EQ(MediaAccessorRegistryOverride("four", &factories[thread]), QVERR_OK);
      EXPECT_EQ(MediaAccessorRegistryAddExtensionAlias("one", "five"), QVERR_OK);
      MediaAccessorRegistryGetFactory("one", 0, factory, isDefault);
      MediaAccessorRegistryGetExtension(0, text, sizeof text);
      GetMediaFileFactory(GetMediaFileFactoryCount() - 1, factory);
      MediaFilePtr file;
      if (MediaFileOpen(path.c_str(), file) == QVERR_OK) ++opened;
      if (i % 10 == 9) MediaAccessorRegistryClear("five", true);
      if (i % 25 == 24) MediaAccessorRegistryClear();
    }
  };
  std::vector<std::thread> threads;
  for (std::size_t t = 0; t < factories.size(); ++t) threads.emplace_back(work, t);
  for (std::thread& thread : threads) thread.join();
  EXPECT_GT(opened, 0);
  MediaAccessorRegistryClear();
}

TEST(RegistryThreads, TheBuiltInFactoriesAreRegisteredOnce) {
  for (int round = 0; round < 50; ++round) {
    MediaAccessorRegistryClear();
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
      threads.emplace_back([] { EXPECT_EQ(InitializeMediaAccessorLibrary(), QVERR_OK); });
    }
    for (std::thread& thread : threads) thread.join();
    const unsigned long once = GetMediaFileFactoryCount();
    MediaAccessorRegistryClear();
    EXPECT_EQ(GetMediaFileFactoryCount(), once);
  }
}

class HeldRegistry : public testing::Test {
 protected:
  FactoryRegistry registry{[](FactoryRegistry&) { return QVERR_OK; }};
  FakeFactory factory{{L"fake"}};

  // Runs an operation in a thread of its own for each, all while this thread holds the lock.
  void ExpectBusy(const std::vector<std::function<QVERRORCODE_TAG()>>& operations) {
    ASSERT_TRUE(registry.Lock().Acquire(1));
    std::vector<std::thread> threads;
    for (const auto& operation : operations) {
      threads.emplace_back([&operation] { EXPECT_EQ(operation(), QVERR_BUSY); });
    }
    for (std::thread& thread : threads) thread.join();
    registry.Lock().Release();
  }
};

TEST_F(HeldRegistry, EveryOperationGivesUp) {
  const auto listed = [this] {
    std::vector<const CMediaFileFactory*> list;
    EXPECT_EQ(registry.GetFactoryList(list), QVERR_OK);
    return list.size();
  };
  ASSERT_EQ(registry.Initialize(), QVERR_OK);
  std::size_t count = 0;
  std::wstring text;
  CandidateList candidates;
  ExpectBusy({
      [&] { return registry.Initialize(); },
      [&] { return registry.Add(&factory); },
      [&] { return registry.Override(L"x", &factory); },
      [&] { return registry.AddExtensionAlias(L"", L"x"); },
      [&] { return registry.AddExtensionAlias(L"y", L"x"); },
      [&] { return registry.SetDefault(&factory, L""); },
      [&] { return registry.ClearExtension(L"x", true); },
      [&] { return registry.Clear(); },
      [&] { return registry.ClearDefaults(); },
      [&] { return registry.GetExtensionCount(count); },
      [&] { return registry.GetExtension(0, text); },
      [&] { return registry.GetCandidates(L"x", candidates); },
  });
  EXPECT_EQ(listed(), 1U) << "the factory stays in the list that has a lock of its own";
  ASSERT_EQ(registry.GetCandidates(L"fake", candidates), QVERR_OK);
  EXPECT_TRUE(candidates.factories.empty());
}

// An Add that is overtaken by a Clear ends as if it had come after it.
TEST(RegistryThreads, AnAddThatMeetsAClear) {
  static const FakeFactory builtIn({L"fake"});
  FactoryRegistry registry([](FactoryRegistry& r) { return r.AddUninitialized(builtIn); });
  const FakeFactory mine({L"fake"});
  std::vector<const CMediaFileFactory*> list;
  ASSERT_EQ(registry.Initialize(), QVERR_OK);
  ASSERT_TRUE(registry.Lock().Acquire(1));
  std::thread adding([&] { EXPECT_EQ(registry.Add(&mine), QVERR_OK); });
  while (list.size() < 2) {  // it now waits for the lock
    ASSERT_EQ(registry.GetFactoryList(list), QVERR_OK);
    std::this_thread::yield();
  }
  EXPECT_EQ(registry.Clear(), QVERR_OK);
  registry.Lock().Release();
  adding.join();
  EXPECT_EQ(registry.GetFactoryList(list), QVERR_OK);
  EXPECT_EQ(list, (std::vector<const CMediaFileFactory*>{&builtIn, &mine}));
  CandidateList candidates;
  EXPECT_EQ(registry.GetCandidates(L"fake", candidates), QVERR_OK);
  EXPECT_EQ(candidates.factories, (std::vector<const CMediaFileFactory*>{&mine, &builtIn}));
}

// The exported counting and text functions give 0 instead of a code.
TEST(RegistryThreads, ExportedFunctionsOnAHeldLock) {
  MediaAccessorRegistryClear();
  InitializeMediaAccessorLibrary();
  RecursiveLock& lock = FactoryRegistry::Instance().Lock();
  ASSERT_TRUE(lock.Acquire(1));
  std::vector<std::thread> threads;
  threads.emplace_back([] { EXPECT_EQ(MediaAccessorRegistryGetExtensionCount(), 0U); });
  threads.emplace_back([] {
    char text[8];
    EXPECT_EQ(MediaAccessorRegistryGetExtension(0, text, sizeof text), 0U);
  });
  threads.emplace_back([] {
    MediaFilePtr file;
    EXPECT_EQ(MediaFileOpen("x.wav", file), QVERR_BUSY);
  });
  for (std::thread& thread : threads) thread.join();
  lock.Release();
  EXPECT_GT(MediaAccessorRegistryGetExtensionCount(), 0U);
}

// A factory may use the registry while the registration itself adds it.
TEST(RegistryThreads, RegistrationMayBeReentered) {
  struct NosyFactory : FakeFactory {
    explicit NosyFactory(FactoryRegistry*& registry)
        : FakeFactory({L"nosy"}), registry_(registry) {}
    unsigned long GetExtensionCount() const override {
      std::size_t count = 0;
      EXPECT_EQ(registry_->GetExtensionCount(count), QVERR_OK);
      EXPECT_EQ(registry_->Initialize(), QVERR_OK);
      return FakeFactory::GetExtensionCount();
    }
    FactoryRegistry*& registry_;
  };
  static FactoryRegistry* current = nullptr;
  static const NosyFactory nosy(current);
  FactoryRegistry registry([](FactoryRegistry& r) { return r.AddUninitialized(nosy); });
  current = &registry;
  EXPECT_EQ(registry.Initialize(), QVERR_OK);
  std::size_t count = 0;
  EXPECT_EQ(registry.GetExtensionCount(count), QVERR_OK);
  EXPECT_EQ(count, 1U);
}

}  // namespace
