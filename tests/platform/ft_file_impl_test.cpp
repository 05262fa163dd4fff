// The system's file: the same operations and the same codes on every system.
#include "platform/ft_file_impl.h"

#include <MediaAccessor/all.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <istream>
#include <memory>
#include <string>

#include "platform/input_file.h"
#include "platform/text.h"
#include "tests/test_files.h"
#include "tests/test_system.h"
#include "tests/thrown_code.h"

namespace {

using namespace Quorvex;
using platform::CFTFileImpl;
using tests::Bytes;
using tests::ThrownCode;

class FTFileImpl : public testing::Test {
 protected:
  std::wstring Name(const std::string& name) const { return platform::Widen(directory.File(name)); }
  std::wstring Existing(const Bytes& bytes) const {
    tests::WriteBytes(directory.File("x"), bytes);
    return Name("x");
  }
  Bytes Read(std::uint32_t count) const {
    Bytes bytes(count);
    file->Read(bytes.data(), count);
    return bytes;
  }

  const tests::TemporaryDirectory directory;
  const std::unique_ptr<CFTFileImpl> file{platform::CreateFTFileImpl()};
};

TEST_F(FTFileImpl, ReadsAndWritesByPosition) {
  EXPECT_FALSE(file->IsOpen());
  file->Create(Name("new").c_str());
  EXPECT_TRUE(file->IsOpen());
  const Bytes bytes = {1, 2, 3, 4, 5};
  file->Write(bytes.data(), 5);
  EXPECT_EQ(file->Tell(), 5);
  file->Seek(1);
  EXPECT_EQ(Read(2), (Bytes{2, 3}));
  EXPECT_EQ(file->Tell(), 3);
  EXPECT_EQ(file->GetSize(), 5);
  file->Close();
  EXPECT_FALSE(file->IsOpen());
  EXPECT_EQ(tests::ReadBytes(directory.File("new")), bytes);

  file->Open(Name("new").c_str(), true);
  file->Seek(4);
  file->Write(bytes.data(), 2);
  file->Create(Existing({9}).c_str());
  EXPECT_EQ(file->GetSize(), 0) << "an existing file is emptied";
  file->Close();
  EXPECT_EQ(tests::ReadBytes(directory.File("new")), (Bytes{1, 2, 3, 4, 1, 2}));
}

TEST_F(FTFileImpl, WhatIsNotWholeIsAFailure) {
  file->Open(Existing({1, 2, 3}).c_str(), false);
  Bytes room(8);
  EXPECT_EQ(ThrownCode([&] { file->Read(room.data(), 4); }), QVERR_FILE_IO) << "a short read";
  EXPECT_EQ(ThrownCode([&] { file->Write(room.data(), 1); }), QVERR_FILE_WRITE_FAILED)
      << "not opened for writing";
  EXPECT_EQ(ThrownCode([&] { file->Seek(-1); }), QVERR_FILE_IO);
  file->Seek(2);
  EXPECT_EQ(Read(1), Bytes{3}) << "still usable";
  file->Close();
  for (const std::function<void()>& operation : std::initializer_list<std::function<void()>>{
           [&] { file->Seek(0); }, [&] { file->Tell(); }, [&] { file->GetSize(); },
           [&] { file->GetModificationTime(); }, [&] { file->Read(room.data(), 1); }}) {
    EXPECT_EQ(ThrownCode(operation), QVERR_FILE_IO) << "closed";
  }
  EXPECT_EQ(file->GetStream(), nullptr);
}

TEST_F(FTFileImpl, TheCauseDecidesTheCode) {
  std::filesystem::create_directory(directory.File("directory"));
  const std::wstring missing = Name("missing");
  const std::wstring noDirectory = Name("no/such");
  const std::wstring noDirectoryEither = Name("x/below a file");
  const std::wstring aDirectory = Name("directory");
  Existing({});
  for (const bool write : {false, true}) {
    const auto open = [&](const std::wstring& name) {
      return ThrownCode([&] { file->Open(name.c_str(), write); });
    };
    EXPECT_EQ(open(missing), QVERR_FILE_NOT_FOUND);
    EXPECT_EQ(open(noDirectory), QVERR_PATH_NOT_FOUND);
    EXPECT_EQ(open(noDirectoryEither), QVERR_PATH_NOT_FOUND);
    // No directory can be opened as a file: a refusal, which has its own code only when writing.
    EXPECT_EQ(open(aDirectory), write ? QVERR_ACCESS_DENIED : QVERR_FILE_OPEN_FAILED);
    EXPECT_FALSE(file->IsOpen());
  }
  const auto create = [&](const std::wstring& name) {
    return ThrownCode([&] { file->Create(name.c_str()); });
  };
  EXPECT_EQ(create(noDirectory), QVERR_FILE_CREATE_FAILED);
  EXPECT_EQ(create(aDirectory), QVERR_ACCESS_DENIED);
  const auto remove = [&](const std::wstring& name) {
    return ThrownCode([&] { file->Delete(name.c_str()); });
  };
  EXPECT_EQ(remove(missing), QVERR_FILE_NOT_FOUND);
  EXPECT_EQ(remove(noDirectory), QVERR_PATH_NOT_FOUND);
  EXPECT_EQ(remove(aDirectory), QVERR_FILE_WRITE_FAILED);
  EXPECT_EQ(remove(Name("x")), QVERR_OK);
  EXPECT_FALSE(std::filesystem::exists(directory.File("x")));
}

TEST_F(FTFileImpl, BeyondFourGigabytes) {
  constexpr std::int64_t kFar = 5'000'000'000;
  const std::wstring name = Name("large");
  const Bytes mark = {0xAB, 0xCD};
  file->Create(name.c_str());
  file->Seek(kFar);
  file->Write(mark.data(), 2);
  EXPECT_EQ(file->Tell(), kFar + 2);
  file->Open(name.c_str(), false);
  EXPECT_EQ(file->GetSize(), kFar + 2);
  file->Seek(kFar);
  EXPECT_EQ(file->Tell(), kFar);
  EXPECT_EQ(Read(2), mark);
  std::istream* const stream = file->GetStream();
  ASSERT_NE(stream, nullptr);
  EXPECT_TRUE(stream->seekg(kFar + 1));
  EXPECT_EQ(stream->get(), 0xCD);
  file->Close();

  platform::InputFile input;
  ASSERT_TRUE(input.Open(name.c_str()));
  EXPECT_EQ(input.Size(), static_cast<std::uint64_t>(kFar + 2));
  Bytes room(4);
  std::size_t got = 0;
  EXPECT_TRUE(input.ReadAt(kFar, room.data(), 4, got));
  EXPECT_EQ(got, 2U);
  EXPECT_EQ(room[1], 0xCD);
}

TEST_F(FTFileImpl, OddNames) {
  const Bytes recording = tests::ReadBytes(tests::Fixture("sox_alaw_stereo.wav"));
  std::vector<std::wstring> names = tests::OddFileNames();
  names.push_back(platform::Widen(tests::kOddNarrowFileName));
  for (const std::wstring& odd : names) {
    const std::wstring name = Name("") + odd;
    file->Create(name.c_str());
    file->Write(recording.data(), static_cast<std::uint32_t>(recording.size()));
    file->Open(name.c_str(), true);
    EXPECT_EQ(file->GetSize(), static_cast<std::int64_t>(recording.size()));
    file->Close();
    MediaFilePtr opened;
    EXPECT_EQ(MediaFileOpen(name.c_str(), opened), QVERR_OK);
    if (odd == names.back()) {
      const std::string narrow = directory.File("") + tests::kOddNarrowFileName;
      EXPECT_EQ(MediaFileOpen(narrow.c_str(), opened), QVERR_OK);
      EXPECT_EQ(TextOf<char>([&](char* buffer, unsigned long capacity) {
                  return opened->GetFileName(buffer, capacity);
                }),
                narrow);
    }
    opened.reset();
    file->Delete(name.c_str());
    EXPECT_EQ(ThrownCode([&] { file->Open(name.c_str(), false); }), QVERR_FILE_NOT_FOUND);
  }
}

TEST_F(FTFileImpl, ModificationTimeTakesUtcForLocalTime) {
  const std::wstring name = Existing({1});
  const auto time = std::filesystem::file_time_type::clock::now() - std::chrono::hours(100);
  std::filesystem::last_write_time(directory.File("x"), time);
  tests::SetTimeZone("UTC0");
  file->Open(name.c_str(), true);
  const std::int64_t utc = file->GetModificationTime();
  const std::int64_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
  EXPECT_NEAR(static_cast<double>(now - utc), 100 * 3600, 60) << "true where local time is UTC";
  tests::SetTimeZone("XYZ5");
  EXPECT_EQ(file->GetModificationTime(), utc) << "remembered";
  file->Open(name.c_str(), true);
  EXPECT_EQ(file->GetModificationTime(), utc + 5 * 3600);
  const std::uint8_t byte = 2;
  file->Write(&byte, 1);
  EXPECT_GT(file->GetModificationTime(), utc + 6 * 3600) << "forgotten by a write";
  tests::SetTimeZone("UTC0");
}

TEST_F(FTFileImpl, TheStreamIsTheFilesAndEndsWithIt) {
  const std::wstring name = Existing({'a', '\r', '\n', 0x1A, 'z'});
  for (const bool write : {false, true}) {
    file->Open(name.c_str(), write);
    std::istream* const stream = file->GetStream();
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(file->GetStream(), stream);
    std::string text(std::istreambuf_iterator<char>(*stream), {});
    EXPECT_EQ(text, std::string("a\r\n\x1Az")) << "binary";
    EXPECT_EQ(file->GetSize(), 5) << "still open";
    file->Close();
    EXPECT_FALSE(file->IsOpen());
    file->Close();
    EXPECT_EQ(file->GetStream(), nullptr);
  }
  file->Delete(name.c_str());
}

}  // namespace
