// Files of every format that are cut off, or made to do harm.
#include <MediaAccessor/all.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/fake_media.h"
#include "tests/test_files.h"

namespace {

using namespace Quorvex;

// Reads a file that may be anything: whatever opens tells its true length, unless it is one of the
// two formats that tell it in one place and have their audio in others. @return its frames, up to
// its end or a failure.
unsigned long long CountFrames(const std::filesystem::path& path) {
  MediaFilePtr file;
  const QVERRORCODE_TAG opened = MediaFileOpen(path.string().c_str(), file);
  if (opened != QVERR_OK) {
    EXPECT_TRUE(opened == QVERR_BAD_FORMAT || opened == QVERR_FILE_OPEN_FAILED ||
                opened == QVERR_FILE_IO)
        << opened;
    return 0;
  }
  unsigned long long total = 0;
  const short* samples = nullptr;
  unsigned long frames = 0;
  QVERRORCODE_TAG result = QVERR_OK;
  while ((result = file->ReadBlock(samples, frames)) == QVERR_OK && frames > 0) total += frames;
  const std::wstring format = tests::WideDescription(*file);
  if (format == L"Opus media format" || format == L"Microsoft WAV Format") {
    EXPECT_TRUE(result == QVERR_OK || result == QVERR_BAD_FORMAT) << result;
  } else {
    EXPECT_EQ(result, QVERR_OK);
    const double milliseconds = static_cast<double>(total * 1000 / file->GetSamplingFrequency());
    EXPECT_NEAR(static_cast<double>(file->GetMilliseconds()), milliseconds, 1) << path;
  }
  return total;
}

std::vector<std::filesystem::path> FilesIn(const char* directory) {
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(directory)) {
    files.push_back(entry.path());
  }
  return files;
}

TEST(HostileFiles, EveryTruncationIsARefusalOrFewerFrames) {
  constexpr std::uintmax_t kShort = 4096;
  constexpr std::uintmax_t kStride = 97;
  const tests::TemporaryDirectory directory;
  int files = 0;
  for (const std::filesystem::path& whole : FilesIn(MEDIA_ACCESSOR_FIXTURES)) {
    const std::string extension = whole.extension().string();
    if (extension.starts_with(".s")) continue;  // samples and the script, no input of a reader
    const std::filesystem::path path = directory.File("cut" + extension);
    std::filesystem::copy_file(whole, path, std::filesystem::copy_options::overwrite_existing);
    const unsigned long long frames = CountFrames(path);
    std::uintmax_t size = std::filesystem::file_size(path);
    const std::uintmax_t step = size > kShort ? kStride : 1;
    files += frames > 0;
    while (size >= step) {
      size -= step;
      std::filesystem::resize_file(path, size);
      EXPECT_LE(CountFrames(path), frames) << whole << " cut to " << size;
    }
  }
  EXPECT_GT(files, 30);
}

// Each is named after what is wrong with it.
TEST(HostileFiles, TheFuzzingCorpus) {
  const auto files = FilesIn(MEDIA_ACCESSOR_FUZZ_CORPUS);
  EXPECT_GT(files.size(), 10U);
  for (const std::filesystem::path& path : files) CountFrames(path);
}

}  // namespace
