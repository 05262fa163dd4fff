// Files made of chunks: what is read from honest and lying ones, and every byte of a written one.
#include "platform/riff_stream.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "platform/text.h"
#include "tests/test_files.h"
#include "tests/test_system.h"
#include "tests/wav_bytes.h"

namespace {

using namespace Quorvex;
using platform::FourCC;
using platform::RiffChunk;
using platform::RiffStream;

std::string Header(const std::string& id, std::uint32_t size) {
  return id + tests::WavBytes::Number(size, 4);
}

class RiffStreamTest : public testing::Test {
 protected:
  std::wstring Name(const std::string& name) const { return platform::Widen(directory.File(name)); }

  void Open(const std::string& bytes) {
    stream.Close();  // while it is open, nobody else may write to it
    tests::WriteBytes(directory.File("x"), {bytes.begin(), bytes.end()});
    ASSERT_TRUE(stream.Open(Name("x").c_str()));
  }

  std::string Read(std::size_t count) {
    std::string bytes(count, '?');
    std::size_t got = 0;
    EXPECT_TRUE(stream.Read(bytes.data(), count, got));
    return bytes.substr(0, got);
  }

  std::string Written(const std::string& name) const {
    const tests::Bytes bytes = tests::ReadBytes(directory.File(name));
    return {bytes.begin(), bytes.end()};
  }

  const tests::TemporaryDirectory directory;
  RiffStream stream;
};

// A walk through the chunks of a RIFF chunk, and what of the first one's data is there.
TEST_F(RiffStreamTest, WalksThroughHonestAndLyingFiles) {
  const std::string one = Header("one ", 2) + "ab";
  const std::string two = Header("two ", 0);
  const auto lying = [](std::uint32_t size) { return Header("one ", size) + "abcd"; };
  const struct {
    const char* what;
    std::uint32_t riffSize;
    std::string body;  // behind the form type
    std::string ids;
    std::uint64_t end;  // where ascending from the last one leads
    std::string data;
  } cases[] = {
      {"nothing in it", 4, "", "", 12, ""},
      {"even sizes", 24, one + Header("two ", 2) + "cd", "one two ", 32, "ab"},
      {"a pad byte", 22, Header("one ", 1) + std::string("a\0", 2) + two, "one two ", 30, "a"},
      {"no pad byte at the end", 15, Header("one ", 3) + "abc", "one ", 23, "abc"},
      {"no data", 20, Header("one ", 0) + two, "one two ", 28, ""},
      {"a list, skipped", 28, Header("LIST", 8) + "INFOabcd" + two, "LISTtwo ", 36, "abcd"},
      {"a list too short for its type", 22, Header("LIST", 2) + "IN" + two, "LISTtwo ", 30, ""},
      {"behind its parent", 14, one + two, "one ", 22, "ab"},
      {"a parent that ends in a header", 18, one + two, "one ", 22, "ab"},
      {"a parent that has no size", 0, one, "", 12, ""},
      {"a parent of any size", 0xFFFFFFFF, one, "one ", 22, "ab"},
      {"past the end", 1000, lying(100), "one ", 24, "abcd"},
      {"all ones", 1000, lying(0xFFFFFFFF), "one ", 24, "abcd"},
      {"back to itself", 1000, lying(0xFFFFFFF0), "one ", 24, "abcd"},
      {"the sign bit", 1000, lying(0x80000000), "one ", 24, "abcd"},
      {"the largest number", 1000, lying(0x7FFFFFFF), "one ", 24, "abcd"},
      {"a list of all ones", 1000, Header("LIST", 0xFFFFFFFF) + "adtlabcd", "LIST", 28, "abcd"},
      {"half a header", 1000, one + "two \x04", "one ", 22, "ab"},
      {"a list without its type", 1000, one + Header("LIST", 4) + "INF", "one ", 22, "ab"},
  };
  for (const auto& expected : cases) {
    SCOPED_TRACE(expected.what);
    Open(Header("RIFF", expected.riffSize) + "WAVE" + expected.body);
    RiffChunk riff;
    ASSERT_TRUE(stream.Descend(riff, nullptr));
    EXPECT_EQ(riff.id, platform::kRiffId);
    EXPECT_EQ(riff.type, FourCC("WAVE"));
    EXPECT_EQ(riff.size, expected.riffSize);
    EXPECT_EQ(riff.offset, 8U);
    EXPECT_EQ(stream.Position(), 12U);
    std::string ids;
    RiffChunk chunk;
    while (ids.size() < 36 && stream.Descend(chunk, &riff)) {
      if (ids.empty()) {
        EXPECT_EQ(Read(expected.data.size()), expected.data);
      }
      for (int shift = 0; shift < 32; shift += 8)
        ids += static_cast<char>(chunk.id >> shift & 0xFF);
      EXPECT_TRUE(stream.Ascend(chunk));
    }
    EXPECT_EQ(ids, expected.ids);
    EXPECT_EQ(stream.Position(), expected.end);
  }
}

TEST_F(RiffStreamTest, NoChunkAtAll) {
  for (const char* bytes : {"", "RIF", "RIFF\4\0\0\0WAV"}) {
    Open(std::string(bytes, bytes[0] == '\0' ? 0 : bytes[3] == '\0' ? 3 : 11));
    RiffChunk chunk;
    EXPECT_FALSE(stream.Descend(chunk, nullptr));
    EXPECT_EQ(stream.Position(), 0U);
  }
}

TEST_F(RiffStreamTest, TheTypeOfANestedListIsItsOwn) {
  Open(Header("RIFF", 24) + "WAVE" + Header("LIST", 12) + "INFO" + Header("IART", 0));
  RiffChunk riff;
  RiffChunk list;
  RiffChunk inner;
  ASSERT_TRUE(stream.Descend(riff, nullptr));
  ASSERT_TRUE(stream.Descend(list, &riff));
  EXPECT_EQ(list.type, FourCC("INFO"));
  EXPECT_EQ(list.offset, 20U);
  ASSERT_TRUE(stream.Descend(inner, &list));
  EXPECT_EQ(inner.id, FourCC("IART"));
  EXPECT_EQ(inner.type, 0U);
  EXPECT_FALSE(stream.Descend(inner, &list));
}

TEST_F(RiffStreamTest, ThereIsNothingBehindTheEnd) {
  Open("0123456789");
  EXPECT_TRUE(stream.Seek(8));
  EXPECT_EQ(Read(4), "89");
  EXPECT_EQ(stream.Position(), 10U);
  EXPECT_EQ(Read(4), "");
  for (const std::uint64_t offset :
       {std::uint64_t{11}, std::uint64_t{0x7FFFFFFF}, std::uint64_t{0x80000000},
        std::uint64_t{0x100000002}, ~std::uint64_t{0}}) {
    if (stream.Seek(offset)) {
      EXPECT_EQ(stream.Position(), offset);
      EXPECT_EQ(Read(4), "");
      RiffChunk chunk;
      EXPECT_FALSE(stream.Descend(chunk, nullptr));
    }
    EXPECT_TRUE(stream.Seek(3));
    EXPECT_EQ(Read(2), "34") << "still usable";
  }
}

TEST_F(RiffStreamTest, WritesSizesAndPadBytesAtTheEnd) {
  tests::WriteBytes(directory.File("new"), tests::Bytes(1000));
  ASSERT_TRUE(stream.Create(Name("new").c_str()));
  RiffChunk riff{.id = platform::kRiffId, .type = FourCC("WAVE")};
  ASSERT_TRUE(stream.CreateChunk(riff));
  const auto write = [&](const char* id, const std::string& data) {
    RiffChunk chunk{.id = id == std::string("LIST") ? platform::kListId : FourCC("data"),
                    .type = FourCC("INFO")};
    ASSERT_TRUE(stream.CreateChunk(chunk));
    EXPECT_TRUE(stream.Write(data.data(), data.size()));
    EXPECT_TRUE(stream.Ascend(chunk));
  };
  write("data", "ab");
  write("data", "abc");
  write("data", "");
  write("LIST", "x");
  EXPECT_TRUE(stream.Ascend(riff));
  EXPECT_EQ(stream.Position(), 12U + 10 + 12 + 8 + 14);
  EXPECT_TRUE(stream.Close());
  EXPECT_FALSE(stream.IsOpen());
  EXPECT_EQ(Written("new"), Header("RIFF", 48) + "WAVE" + Header("data", 2) + "ab" +
                                Header("data", 3) + std::string("abc\0", 4) + Header("data", 0) +
                                Header("LIST", 5) + std::string("INFOx\0", 6));
}

TEST_F(RiffStreamTest, WhatIsNotWrittenIsNoSuccess) {
  if (tests::kFullDevice != nullptr) {
    EXPECT_FALSE(stream.Create(platform::Widen(tests::kFullDevice).c_str())) << "no regular file";
  }
  ASSERT_TRUE(stream.Create(Name("new").c_str()));
  EXPECT_TRUE(stream.Write("abc", 3));
  // Never touched: such an amount is refused before anything is looked at.
  EXPECT_FALSE(stream.Write("abc", std::size_t{1} << 32));
  EXPECT_TRUE(stream.Close());
  EXPECT_EQ(Written("new"), "abc");
}

TEST_F(RiffStreamTest, OpensRegularFilesUnderAnyName) {
  EXPECT_FALSE(stream.Open(Name("missing").c_str()));
  EXPECT_FALSE(stream.Create(Name("no/such").c_str()));
  std::filesystem::create_directory(directory.File("directory"));
  EXPECT_FALSE(stream.Open(Name("directory").c_str()));
  EXPECT_FALSE(stream.Create(Name("directory").c_str()));
  EXPECT_FALSE(stream.IsOpen());
  std::vector<std::wstring> names = tests::OddFileNames();
  names.push_back(std::wstring(150, L'n') + L".wav");
  names.push_back(L"a.b+c.wav");
  for (const std::wstring& odd : names) {
    const std::wstring name = Name("") + odd;
    ASSERT_TRUE(stream.Create(name.c_str())) << platform::Narrow(odd);
    EXPECT_TRUE(stream.Write("abcd", 4));
    EXPECT_TRUE(stream.Close());
    ASSERT_TRUE(stream.Open(name.c_str())) << platform::Narrow(odd);
    EXPECT_EQ(Read(8), "abcd");
    stream.Close();
  }
}

}  // namespace
