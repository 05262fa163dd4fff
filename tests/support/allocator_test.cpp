// The thread's allocator, the growable array, and what happens when memory runs out.
#include "support/allocator.h"

#include <MediaAccessor/all.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <thread>
#include <vector>

#include "support/cft_array.h"
#include "tests/counting_heap.h"
#include "tests/fake_media.h"
#include "tests/test_files.h"
#include "tests/wav_bytes.h"

// Counts every allocation of this program that does not go through an Allocator.
static std::atomic<long> globalAllocations{0};

// Not inlined: the compiler would see half of a pair and warn of the other.
[[gnu::noinline]] void* operator new(std::size_t bytes) {
  ++globalAllocations;
  if (void* memory = std::malloc(bytes > 0 ? bytes : 1)) return memory;
  throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace {

using namespace Quorvex;
using tests::CountingHeap;

TEST(Allocator, ObjectsReturnToTheHeapThatTheyCameFrom) {
  CountingHeap heap;
  MediaAccessorMixer* mixer = nullptr;
  {
    const ScopedAllocator scope(&heap);
    EXPECT_EQ(&CurrentAllocator(), &heap);
    std::thread([] { EXPECT_EQ(&CurrentAllocator(), &GlobalHeap()); }).join();
    {
      const ScopedAllocator inner(nullptr);
      EXPECT_EQ(&CurrentAllocator(), &GlobalHeap());
    }
    mixer = MediaAccessorMixer::CreateInstance();
  }
  EXPECT_EQ(&CurrentAllocator(), &GlobalHeap());
  EXPECT_EQ(heap.alive, 1);
  mixer->SetChannelCount(2);
  const short frame[] = {1, 2};
  mixer->Write(frame, sizeof frame);
  EXPECT_EQ(heap.alive, 2) << "buffers come from the heap of their object";
  mixer->Release();
  EXPECT_EQ(heap.alive, 0);
}

TEST(Allocator, WithoutMemoryNothingIsCreated) {
  CountingHeap heap;
  heap.budget = 0;
  const ScopedAllocator scope(&heap);
  EXPECT_EQ(MediaAccessorMixer::CreateInstance(), nullptr);
  EXPECT_EQ(CG711Decoder::CreateInstance(), nullptr);
}

// Every allocation on the way to an open file fails in turn: a result, no leak, a reusable object.
TEST(Allocator, OpeningFailsCleanlyAtEveryAllocation) {
  CountingHeap heap;
  const ScopedAllocator scope(&heap);
  const std::string path = tests::Fixture("sox_alaw_stereo.wav");
  QVERRORCODE_TAG result = QVERR_CREATE_FAILED;
  for (int budget = 0; result != QVERR_OK; ++budget) {
    ASSERT_LT(budget, 20);
    MediaFilePtr file;
    heap.budget = budget;
    result = MediaFileOpen(path.c_str(), file);
    EXPECT_TRUE(result == QVERR_OK || result == QVERR_CREATE_FAILED);
    EXPECT_EQ(result == QVERR_OK, file != nullptr);
    file.reset();
    EXPECT_EQ(heap.alive, 0);
  }
}

TEST(Allocator, ReadingAllocatesForTheFirstBlockOnly) {
  CountingHeap heap;
  const ScopedAllocator scope(&heap);
  const tests::TemporaryDirectory directory;
  for (const std::uint32_t tag : {1U, 7U}) {
    tests::WavBytes wav;
    wav.tag = tag;
    wav.channels = 2;
    wav.blockAlign = tag == 1 ? 4 : 2;
    wav.frequency = 100;
    wav.data.resize(100 * wav.blockAlign * 5);  // five blocks
    tests::WriteBytes(directory.File("x.wav"), wav.ToBytes());
    MediaFilePtr file;
    ASSERT_EQ(MediaFileOpen(directory.File("x.wav").c_str(), file), QVERR_OK);
    const short* samples = nullptr;
    unsigned long frames = 0;
    ASSERT_EQ(file->ReadBlock(samples, frames), QVERR_OK);
    const long before = heap.allocations + globalAllocations;
    for (int block = 0; block < 4; ++block) {
      ASSERT_EQ(file->ReadBlock(samples, frames), QVERR_OK);
      ASSERT_EQ(frames, 100U);
    }
    EXPECT_EQ(heap.allocations + globalAllocations, before);
  }
}

TEST(Allocator, SamplesWithoutMemoryAreDropped) {
  CountingHeap heap;
  const ScopedAllocator scope(&heap);
  const MediaAccessorMixerPtr mixer(MediaAccessorMixer::CreateInstance());
  mixer->SetChannelCount(2);
  const std::vector<short> frames(2 * 5000, 7);
  const auto push = [&](std::size_t count) {
    return mixer->Write(frames.data(), static_cast<unsigned long>(count * 2 * sizeof(short)));
  };
  EXPECT_EQ(push(3000), QVERR_OK);
  heap.budget = 0;
  EXPECT_EQ(push(5000), QVERR_OK);
  const short* samples = nullptr;
  unsigned long count = 0;
  EXPECT_EQ(mixer->ReadBlock(samples, count), QVERR_OK);
  EXPECT_EQ(count, 3000U) << "what fitted the memory that there was";
}

TEST(CFTarray, GrowsByTheStepRule) {
  CFTarray<short> small;
  EXPECT_TRUE(small.Resize(10));
  EXPECT_EQ(small.Capacity(), 10U) << "up to the step exactly what is asked for";
  EXPECT_TRUE(small.Resize(4096));
  EXPECT_EQ(small.Capacity(), 4096U);
  EXPECT_TRUE(small.Resize(4097));
  EXPECT_EQ(small.Capacity(), 8192U);
  EXPECT_TRUE(small.Resize(12288));
  EXPECT_EQ(small.Capacity(), 16384U) << "(n / step + 1) x step, also for a whole multiple";

  CFTarray<short> stepped;
  stepped.SetGrowth(8, 32, true, true);
  const std::size_t expected[] = {8, 16, 32, 64};  // capacities for 1, 9, 17, 33; the step doubles
  std::size_t index = 0;
  for (const std::size_t count : {1U, 9U, 17U, 33U}) {
    EXPECT_TRUE(stepped.Resize(count));
    EXPECT_EQ(stepped.Capacity(), expected[index++]);
  }
  EXPECT_TRUE(stepped.Resize(65));
  EXPECT_EQ(stepped.Capacity(), 96U) << "the step stays at its largest";
}

TEST(CFTarray, KeepsItsElementsAndFailsWithoutAChange) {
  CountingHeap heap;
  const ScopedAllocator scope(&heap);
  CFTarray<std::vector<int>> array;
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(array.Append(std::vector<int>(3, i)));
  heap.budget = 0;
  EXPECT_FALSE(array.Append({}));
  EXPECT_FALSE(array.Resize(~std::size_t{0}));
  EXPECT_FALSE(array.Reserve(~std::size_t{0} / sizeof(std::vector<int>)));
  EXPECT_EQ(array.Count(), 3U);
  EXPECT_EQ(array[2], std::vector<int>(3, 2));
  EXPECT_TRUE(array.Resize(1));
  EXPECT_EQ(array.Count(), 1U);
  array.Reset();
  EXPECT_EQ(heap.alive, 0);
}

}  // namespace
