// The default frequency of VOX files, set while files are opened.
#include <MediaAccessor/all.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "tests/test_files.h"

namespace {

using namespace Quorvex;

TEST(VOXThreads, AnyThreadMaySetTheDefaultFrequency) {
  std::atomic<bool> isOver = false;
  std::thread setter([&isOver] {
    for (unsigned long frequency = 6000; !isOver; frequency = 14'000 - frequency) {
      CVOXMediaFile::SetDefaultSamplingFrequency(frequency);
    }
  });
  for (int i = 0; i < 1000; ++i) {
    MediaFilePtr file;
    ASSERT_EQ(MediaFileOpen(tests::Fixture("vox_sox.vox").c_str(), file), QVERR_OK);
    const unsigned long frequency = file->GetSamplingFrequency();
    EXPECT_TRUE(frequency == 6000 || frequency == 8000) << frequency;
  }
  isOver = true;
  setter.join();
  CVOXMediaFile::SetDefaultSamplingFrequency(6000);
}

}  // namespace
