// Blocks of units, through more than one window over the file, in every relation of their sizes.
#include "support/unit_reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "tests/test_files.h"

namespace {

using namespace Quorvex;

class Units : public testing::Test {
 protected:
  // Opens a file of so many bytes, no two neighbours alike.
  void Make(std::size_t size) {
    bytes.resize(size);
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<unsigned char>(i * 7 + i / 251);
    tests::WriteBytes(path, bytes);
    ASSERT_TRUE(reader.Open(std::wstring(path.begin(), path.end()).c_str()));
  }

  // Reads to the end. Every block but the last has to be whole.
  tests::Bytes PullAll(const UnitLayout& layout) {
    tests::Bytes all;
    bool isLast = false;
    for (;;) {
      const unsigned char* units = nullptr;
      std::size_t count = 0;
      EXPECT_EQ(reader.Next(units, count), QVERR_OK);
      if (count == 0) return all;
      EXPECT_FALSE(isLast) << "a block after one that is not whole";
      isLast = count < layout.blockUnits;
      EXPECT_LE(count, layout.blockUnits);
      all.insert(all.end(), units, units + count * layout.unitBytes);
    }
  }

  const tests::TemporaryDirectory directory;
  const std::string path = directory.File("units");
  tests::Bytes bytes;
  UnitReader reader;
};

TEST_F(Units, TheWholeUnitsOfTheStretchAndNothingElse) {
  constexpr std::size_t kSize = 100'003;
  Make(kSize);
  for (const std::size_t offset : {std::size_t{0}, std::size_t{41}, kSize}) {
    for (const std::uint64_t size : {UnitLayout::kToTheEnd, std::uint64_t{70'001}}) {
      for (const std::size_t unitBytes : {1U, 3U, 8U, 40'000U}) {
        for (const std::size_t blockUnits : {1U, 1000U, 1024U, 200'000U}) {
          if (offset == kSize && size != UnitLayout::kToTheEnd) continue;
          const UnitLayout layout = {offset, size, unitBytes, blockUnits};
          ASSERT_GT(reader.Start(layout), 0U);
          const std::size_t length = std::min<std::uint64_t>(size, kSize - offset);
          const auto first = bytes.begin() + static_cast<std::ptrdiff_t>(offset);
          const auto whole = static_cast<std::ptrdiff_t>(length / unitBytes * unitBytes);
          EXPECT_EQ(PullAll(layout), tests::Bytes(first, first + whole))
              << offset << ' ' << size << ' ' << unitBytes << ' ' << blockUnits;
        }
      }
    }
  }
}

TEST_F(Units, AFileThatGrowsOrShrinksWhileItIsRead) {
  Make(10);
  const UnitLayout toTheEnd = {0, UnitLayout::kToTheEnd, 1, 1024};
  ASSERT_GT(reader.Start(toTheEnd), 0U);
  EXPECT_EQ(PullAll(toTheEnd).size(), 10U);
  std::ofstream(path, std::ios::binary | std::ios::app) << std::string(5000, 'x');
  EXPECT_EQ(PullAll(toTheEnd).size(), 5000U) << "in whole blocks";
  const UnitLayout bounded = {0, 10, 1, 4};
  ASSERT_GT(reader.Start(bounded), 0U);
  std::filesystem::resize_file(path, 0);
  const unsigned char* units = nullptr;
  std::size_t count = 0;
  EXPECT_EQ(reader.Next(units, count), QVERR_FILE_IO);
  EXPECT_EQ(count, 0U);
}

}  // namespace
