// The buffered file: what it reads and writes, and what it does when anything fails.
#include "support/ft_file.h"

#include <MediaAccessor/result_code.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <numeric>

#include "platform/text.h"
#include "tests/counting_heap.h"
#include "tests/test_files.h"
#include "tests/thrown_code.h"

namespace {

using namespace Quorvex;
using tests::Bytes;
using tests::ThrownCode;

constexpr std::size_t kBuffer = 5'242'880;

// Bytes that differ from one 16-byte block, and from one buffer, to the next.
Bytes Pattern(std::size_t size) {
  Bytes bytes(size);
  for (std::size_t i = 0; i < size; ++i) {
    bytes[i] = static_cast<unsigned char>(i ^ i >> 8 ^ i >> 16);
  }
  return bytes;
}

class FTFile : public testing::Test {
 protected:
  void Open(const Bytes& bytes, bool write) {
    tests::WriteBytes(path, bytes);
    file.Open(platform::Widen(path), write);
  }
  Bytes Read(std::uint32_t count) {
    Bytes bytes(count);
    file.Read(bytes.data(), count);
    return bytes;
  }
  QVERRORCODE_TAG ReadOne() {
    std::uint8_t byte = 0;
    return ThrownCode([&] { file.Read(&byte, 1); });
  }
  QVERRORCODE_TAG OpenResult(const std::string& name) {
    return ThrownCode([&] { file.Open(platform::Widen(name), false); });
  }

  const tests::TemporaryDirectory directory;
  const std::string path = directory.File("x");
  CFTFile file;
};

TEST_F(FTFile, ReadsAcrossItsBuffersToTheVeryEnd) {
  for (const std::size_t size : {std::size_t{1}, std::size_t{32}, 2 * kBuffer, 2 * kBuffer + 17}) {
    const Bytes whole = Pattern(size);
    Open(whole, false);
    EXPECT_EQ(file.GetSize(), size);
    Bytes read;
    for (std::uint32_t piece = 1; read.size() < size; piece = piece * 3 % 1'000'003) {
      const Bytes bytes = Read(std::min(piece, static_cast<std::uint32_t>(size - read.size())));
      read.insert(read.end(), bytes.begin(), bytes.end());
    }
    EXPECT_TRUE(read == whole);
    EXPECT_EQ(ReadOne(), QVERR_READ_PAST_END);
    file.Close(false);
  }
}

TEST_F(FTFile, AReadPastTheEndMovesNothing) {
  Open({1, 2, 3}, false);
  EXPECT_EQ(Read(1), Bytes{1});
  Bytes room(3, 0xEE);
  EXPECT_EQ(ThrownCode([&] { file.Read(room.data(), 3); }), QVERR_READ_PAST_END);
  EXPECT_EQ(room, Bytes(3, 0xEE));
  EXPECT_EQ(Read(2), (Bytes{2, 3}));
}

TEST_F(FTFile, WritesOverWhatIsThere) {
  Bytes whole = Pattern(kBuffer + 100);
  Open(whole, true);
  Read(kBuffer - 10);
  const Bytes news(30, 0x11);
  file.Write(news.data(), 30);  // the last ten bytes of one buffer, the first twenty of the next
  std::copy(news.begin(), news.end(), whole.begin() + kBuffer - 10);
  EXPECT_EQ(Read(80), Bytes(whole.end() - 80, whole.end()));
  EXPECT_EQ(ThrownCode([&] { file.Write(news.data(), 1); }), QVERR_FILE_WRITE_FAILED)
      << "it does not grow";
  file.Close(false);
  whole.resize(kBuffer + 112);  // a multiple of 16, filled with zeros
  EXPECT_TRUE(tests::ReadBytes(path) == whole);
}

// Deliberate: what was written to ends on a 16-byte boundary.
TEST_F(FTFile, AFlushPadsToSixteenBytes) {
  Bytes expected = Pattern(17);
  Open(expected, true);
  file.Flush();
  EXPECT_EQ(std::filesystem::file_size(path), 17U) << "nothing was changed, nothing is flushed";
  const std::uint8_t byte = 0x77;
  file.Write(&byte, 1);
  EXPECT_EQ(file.GetSize(), 17U);
  file.Flush();
  expected[0] = 0x77;
  expected.resize(32);
  EXPECT_EQ(tests::ReadBytes(path), expected);
  EXPECT_EQ(file.GetSize(), 32U);
  EXPECT_EQ(Read(31), Bytes(expected.begin() + 1, expected.end()))
      << "the padding is part of it now";
}

TEST_F(FTFile, ClosesWithOrWithoutWhatIsInTheBuffer) {
  const std::uint8_t byte = 0x77;
  for (const bool discard : {true, false}) {
    Open(Bytes(16), true);
    file.Write(&byte, 1);
    file.Close(discard);
    EXPECT_EQ(tests::ReadBytes(path)[0], discard ? 0 : 0x77);
  }
  tests::WriteBytes(path, Bytes(16));
  {
    CFTFile destroyed;
    destroyed.Open(platform::Widen(path), true);
    destroyed.Write(&byte, 1);
  }
  EXPECT_EQ(tests::ReadBytes(path)[0], 0) << "destruction discards";
}

TEST_F(FTFile, RefusalsLeaveItAsItWas) {
  EXPECT_EQ(ReadOne(), QVERR_BAD_STATE);
  EXPECT_EQ(ThrownCode([&] { file.GetSize(); }), QVERR_BAD_STATE);
  file.Flush();
  file.Close(false);
  std::filesystem::create_directory(directory.File("directory"));
  EXPECT_EQ(OpenResult(""), QVERR_BAD_FILE_NAME);
  EXPECT_EQ(OpenResult(directory.File("missing")), QVERR_FILE_NOT_FOUND);
  EXPECT_EQ(OpenResult(directory.File("no/such")), QVERR_PATH_NOT_FOUND);
  EXPECT_EQ(OpenResult(directory.File("directory")), QVERR_FILE_OPEN_FAILED);
  EXPECT_FALSE(file.IsOpen());

  Open({1, 2}, false);
  EXPECT_EQ(OpenResult(path), QVERR_BAD_STATE);
  std::uint8_t byte = 9;
  EXPECT_EQ(ThrownCode([&] { file.Read(nullptr, 1); }), QVERR_BAD_STATE);
  EXPECT_EQ(ThrownCode([&] { file.Read(&byte, 0); }), QVERR_BAD_STATE);
  EXPECT_EQ(ThrownCode([&] { file.Write(&byte, 1); }), QVERR_BAD_STATE) << "opened for reading";
  EXPECT_EQ(file.GetProtectedBegin(), ~std::uint64_t{0});
  EXPECT_EQ(file.GetProtectedEnd(), ~std::uint64_t{0});
  EXPECT_EQ(Read(2), (Bytes{1, 2})) << "the first file is still there";
  file.Close(true);
  EXPECT_EQ(file.GetName(), L"");

  EXPECT_EQ(ThrownCode([] { CFTFile::Delete(L""); }), QVERR_BAD_FILE_NAME);
  CFTFile::Delete(platform::Widen(path));
  EXPECT_EQ(ThrownCode([&] { CFTFile::Delete(platform::Widen(path)); }), QVERR_FILE_NOT_FOUND);
}

TEST_F(FTFile, RelativeNamesBeginInTheWorkingDirectory) {
  tests::WriteBytes(path, {1});
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(directory.File(""));
  EXPECT_EQ(OpenResult("x"), QVERR_OK);
  std::filesystem::current_path(before);
  EXPECT_TRUE(std::filesystem::equivalent(file.GetName(), path));
  EXPECT_TRUE(std::filesystem::path(file.GetName()).is_absolute());
}

// A file in memory whose n-th call fails, with the code that the real one throws there.
class FaultyImpl final : public CFTFileImpl {
 public:
  struct Setting {
    Bytes content;
    std::uint64_t claimedSize = 0;  // beyond the content everything reads as it comes
    int callsUntilFailure = -1;     // negative: none fails
    int alive = 0;
    std::function<void()> duringRead;
  };
  static Setting setting;
  static CFTFileImpl* Make() { return new FaultyImpl; }

  FaultyImpl() { ++setting.alive; }
  ~FaultyImpl() override { --setting.alive; }

  bool IsOpen() const noexcept override { return open_; }
  void Create(const wchar_t*) override { throw QVERR_FILE_CREATE_FAILED; }
  void Open(const wchar_t*, bool) override {
    Call(QVERR_FILE_OPEN_FAILED);
    open_ = true;
  }
  void Close() override {
    open_ = false;
    Call(QVERR_FILE_WRITE_FAILED);
  }
  void Delete(const wchar_t*) override { Call(QVERR_FILE_WRITE_FAILED); }
  void Seek(std::int64_t offset) override {
    Call(QVERR_FILE_IO);
    position_ = static_cast<std::uint64_t>(offset);
  }
  std::int64_t Tell() override { return static_cast<std::int64_t>(position_); }
  std::int64_t GetSize() override {
    Call(QVERR_FILE_IO);
    return static_cast<std::int64_t>(
        std::max<std::uint64_t>(setting.content.size(), setting.claimedSize));
  }
  std::int64_t GetModificationTime() override { return 0; }
  std::istream* GetStream() override { return nullptr; }
  void Write(const std::uint8_t* data, std::uint32_t count) override {
    position_ += count / 2;  // a failed transfer leaves it anywhere
    Call(QVERR_FILE_WRITE_FAILED);
    position_ -= count / 2;
    if (setting.content.size() < position_ + count) setting.content.resize(position_ + count);
    std::copy_n(data, count, setting.content.data() + position_);
    position_ += count;
  }
  void Read(std::uint8_t* data, std::uint32_t count) override {
    if (setting.duringRead) setting.duringRead();
    position_ += count / 2;
    Call(QVERR_FILE_IO);
    position_ -= count / 2;
    if (position_ + count <= setting.content.size()) {
      std::copy_n(setting.content.data() + position_, count, data);
    } else {
      data[0] = static_cast<std::uint8_t>(position_ >> 32);
    }
    position_ += count;
  }

 private:
  static void Call(QVERRORCODE_TAG code) {
    if (setting.callsUntilFailure >= 0 && setting.callsUntilFailure-- == 0) throw code;
  }

  bool open_ = false;
  std::uint64_t position_ = 0;
};

FaultyImpl::Setting FaultyImpl::setting;

class FaultyFile : public testing::Test {
 protected:
  FaultyFile() { FaultyImpl::setting = {}; }

  FaultyImpl::Setting& setting = FaultyImpl::setting;
};

// Reads, changes, reads on into a second buffer, changes that, flushes and closes. Whatever fails
// is tried again once; whatever failed has its own code.
TEST_F(FaultyFile, EveryCallFailsInTurn) {
  constexpr std::size_t kSize = kBuffer + 40;
  tests::CountingHeap heap;
  const ScopedAllocator scope(&heap);
  const Bytes news(20, 0x5A);
  bool faultMet = true;
  int calls = 0;
  for (; faultMet; ++calls) {
    ASSERT_LT(calls, 40);
    setting.content = Pattern(kSize);
    Bytes expected = setting.content;
    std::copy(news.begin(), news.end(), expected.begin());
    std::copy(news.begin(), news.end(), expected.begin() + kBuffer);
    expected.resize(kBuffer + 48);
    setting.callsUntilFailure = calls;
    faultMet = false;
    CFTFile file(&FaultyImpl::Make);
    const auto attempt = [&](QVERRORCODE_TAG expectedCode, QVERRORCODE_TAG otherCode,
                             const std::function<void()>& operation) {
      const QVERRORCODE_TAG code = ThrownCode(operation);
      if (code == QVERR_OK) return true;
      EXPECT_TRUE(code == expectedCode || code == otherCode) << code;
      faultMet = true;
      return false;
    };
    if (!attempt(QVERR_FILE_OPEN_FAILED, QVERR_FILE_IO, [&] { file.Open(L"x", true); })) {
      EXPECT_FALSE(file.IsOpen());
      EXPECT_EQ(heap.alive, 0);
      file.Open(L"x", true);
    }
    Bytes bytes(kBuffer - 20);
    const auto write = [&] { file.Write(news.data(), 20); };
    const auto read = [&] { file.Read(bytes.data(), kBuffer - 20); };
    const auto flush = [&] { file.Flush(); };
    if (!attempt(QVERR_FILE_IO, QVERR_FILE_IO, write)) write();
    // A fault at the end of the first buffer comes after all bytes are read, when the change in it
    // is written back: nothing is lost, the next call begins with it.
    attempt(QVERR_FILE_IO, QVERR_FILE_WRITE_FAILED, read);
    EXPECT_TRUE(std::equal(bytes.begin(), bytes.end(), expected.begin() + 20));
    if (!attempt(QVERR_FILE_IO, QVERR_FILE_WRITE_FAILED, write)) write();
    EXPECT_TRUE(file.IsOpen());
    if (!attempt(QVERR_FILE_IO, QVERR_FILE_WRITE_FAILED, flush)) {
      EXPECT_TRUE(file.IsOpen());
      flush();
    }
    EXPECT_EQ(file.GetSize(), expected.size());
    attempt(QVERR_FILE_WRITE_FAILED, QVERR_FILE_WRITE_FAILED, [&] { file.Close(false); });
    EXPECT_FALSE(file.IsOpen());
    EXPECT_EQ(setting.alive, 0);
    EXPECT_EQ(heap.alive, 0);
    EXPECT_TRUE(setting.content == expected) << "after a fault at call " << calls;
  }
  EXPECT_GT(calls, 8);
}

TEST_F(FaultyFile, AFlushThatFailsInCloseLeavesTheFileOpen) {
  setting.content = Pattern(16);
  CFTFile file(&FaultyImpl::Make);
  file.Open(L"x", true);
  const std::uint8_t byte = 0x77;
  file.Write(&byte, 1);
  setting.callsUntilFailure = 1;  // after the seek
  EXPECT_EQ(ThrownCode([&] { file.Close(false); }), QVERR_FILE_WRITE_FAILED);
  EXPECT_TRUE(file.IsOpen());
  setting.callsUntilFailure = 0;
  EXPECT_EQ(ThrownCode([&] { file.Close(true); }), QVERR_FILE_WRITE_FAILED) << "the close itself";
  EXPECT_FALSE(file.IsOpen());
  EXPECT_EQ(setting.content, Pattern(16));
}

TEST_F(FaultyFile, EveryAllocationFailsInTurn) {
  tests::CountingHeap heap;
  const ScopedAllocator scope(&heap);
  CFTFile file(&FaultyImpl::Make);
  int budget = 0;
  for (heap.budget = budget; ThrownCode([&] { file.Open(L"x", false); }) != QVERR_OK;
       heap.budget = ++budget) {
    EXPECT_EQ(ThrownCode([&] {
                heap.budget = budget;
                file.Open(L"x", false);
              }),
              QVERR_CREATE_FAILED);
    EXPECT_FALSE(file.IsOpen());
    EXPECT_EQ(heap.alive, 0);
  }
  EXPECT_EQ(budget, 2) << "the file object and the buffer";
  heap.budget = 0;
  EXPECT_EQ(ThrownCode([] { CFTFile::Delete(L"x", &FaultyImpl::Make); }), QVERR_CREATE_FAILED);
}

TEST_F(FaultyFile, IsBusyWhileItReads) {
  setting.content = Pattern(16);
  CFTFile file(&FaultyImpl::Make);
  file.Open(L"x", true);
  std::uint8_t byte = 0;
  int refusals = 0;
  setting.duringRead = [&] {
    refusals += ThrownCode([&] { file.Read(&byte, 1); }) == QVERR_BAD_STATE;
    refusals += ThrownCode([&] { file.Write(&byte, 1); }) == QVERR_BAD_STATE;
    refusals += ThrownCode([&] { file.Flush(); }) == QVERR_BAD_STATE;
    refusals += ThrownCode([&] { file.Close(true); }) == QVERR_BAD_STATE;
  };
  file.Read(&byte, 1);
  EXPECT_EQ(refusals, 4);
  file.Close(false);
  EXPECT_FALSE(file.IsOpen());
}

TEST_F(FaultyFile, ReadsBeyondFourGigabytes) {
  setting.claimedSize = (std::uint64_t{1} << 32) + kBuffer;
  CFTFile file(&FaultyImpl::Make);
  file.Open(L"x", false);
  EXPECT_EQ(file.GetSize(), setting.claimedSize);
  Bytes room(kBuffer);
  std::uint64_t left = setting.claimedSize;
  for (; left > kBuffer; left -= std::min<std::uint64_t>(left - kBuffer, kBuffer)) {
    file.Read(room.data(),
              static_cast<std::uint32_t>(std::min<std::uint64_t>(left - kBuffer, kBuffer)));
  }
  file.Read(room.data(), static_cast<std::uint32_t>(left));
  EXPECT_TRUE(std::count(room.begin(), room.end(), 1) > 0) << "from behind the fourth gigabyte";
  EXPECT_EQ(ThrownCode([&] { file.Read(room.data(), 1); }), QVERR_READ_PAST_END);
}

}  // namespace
