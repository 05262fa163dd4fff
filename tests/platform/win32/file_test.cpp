// Files where Windows differs: exclusive opening, devices, drives, the error mode, modules.
#include <MediaAccessor/all.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <memory>

#include "platform/ft_file_impl.h"
#include "platform/module.h"
#include "platform/pending_file.h"
#include "platform/riff_stream.h"
#include "platform/text.h"
#include "platform/win32/error_mode_guard.h"
#include "support/ft_file.h"
#include "tests/test_files.h"
#include "tests/thrown_code.h"

namespace {

using namespace Quorvex;
using tests::ThrownCode;

class WindowsFile : public testing::Test {
 protected:
  std::wstring Existing(const std::string& name) const {
    tests::WriteBytes(directory.File(name), {1, 2, 3});
    return platform::Widen(directory.File(name));
  }
  QVERRORCODE_TAG Open(const std::wstring& name, bool write) const {
    return ThrownCode([&] { file->Open(name.c_str(), write); });
  }

  const tests::TemporaryDirectory directory;
  const std::unique_ptr<CFTFileImpl> file{platform::CreateFTFileImpl()};
};

TEST_F(WindowsFile, NobodyElseWritesToAnOpenFile) {
  const std::wstring name = Existing("x");
  const std::unique_ptr<CFTFileImpl> other(platform::CreateFTFileImpl());
  ASSERT_EQ(Open(name, false), QVERR_OK);
  EXPECT_EQ(ThrownCode([&] { other->Open(name.c_str(), false); }), QVERR_OK) << "but reads it";
  EXPECT_EQ(ThrownCode([&] { other->Open(name.c_str(), true); }), QVERR_FILE_OPEN_FAILED);
  EXPECT_EQ(ThrownCode([&] { other->Create(name.c_str()); }), QVERR_FILE_CREATE_FAILED);
  EXPECT_EQ(ThrownCode([&] { other->Delete(name.c_str()); }), QVERR_FILE_WRITE_FAILED);
  file->Close();
  ASSERT_EQ(Open(name, true), QVERR_OK);
  EXPECT_EQ(ThrownCode([&] { other->Open(name.c_str(), false); }), QVERR_FILE_OPEN_FAILED);
  // With a stream over it too, Close lets go of it.
  ASSERT_NE(file->GetStream(), nullptr);
  file->Close();
  EXPECT_EQ(ThrownCode([&] { other->Delete(name.c_str()); }), QVERR_OK);
}

TEST_F(WindowsFile, WhatIsNoFile) {
  EXPECT_EQ(Open(L"NUL", false), QVERR_FILE_OPEN_FAILED);
  MediaFilePtr opened;
  EXPECT_EQ(MediaFileOpen(L"\\\\.\\pipe\\no such pipe.wav", opened), QVERR_FILE_OPEN_FAILED);
}

TEST_F(WindowsFile, AStreamOfChunksKeepsWritersOut) {
  const std::wstring name = Existing("x");
  platform::RiffStream stream;
  platform::RiffStream other;
  ASSERT_TRUE(stream.Open(name.c_str()));
  EXPECT_TRUE(other.Open(name.c_str()));
  EXPECT_FALSE(other.Create(name.c_str()));
  ASSERT_TRUE(stream.Create(name.c_str()));
  EXPECT_FALSE(other.Open(name.c_str())) << "nor readers, from what is not finished";
  stream.Close();
  for (const wchar_t* device : {L"NUL", L"CON", L"\\\\.\\pipe\\no such pipe", L"C:\\"}) {
    EXPECT_FALSE(stream.Open(device));
    EXPECT_FALSE(stream.Create(device));
  }
}

TEST_F(WindowsFile, WhatCannotBeReplaced) {
  const std::wstring name = Existing("x");
  const auto replace = [](const std::wstring& path) {
    return platform::PendingFile().Create(path.c_str(), true);
  };
  ASSERT_NE(SetFileAttributesW(name.c_str(), FILE_ATTRIBUTE_READONLY), 0);
  EXPECT_EQ(replace(name), QVERR_ACCESS_DENIED);
  SetFileAttributesW(name.c_str(), FILE_ATTRIBUTE_NORMAL);
  ASSERT_EQ(Open(name, false), QVERR_OK);
  EXPECT_EQ(replace(name), QVERR_FILE_CREATE_FAILED) << "somebody keeps it";
  file->Close();
  EXPECT_EQ(replace(name), QVERR_OK);
  for (const wchar_t* device : {L"NUL", L"CON", L"\\\\.\\pipe\\x", L"C:\\", L"C:"}) {
    EXPECT_EQ(replace(device), QVERR_FILE_CREATE_FAILED) << platform::Narrow(device);
  }
  EXPECT_EQ(replace(name + L":stream"), QVERR_FILE_CREATE_FAILED);
}

TEST_F(WindowsFile, NamesAreResolvedAsTheyAreWritten) {
  const std::wstring name = Existing("x");
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(directory.File(""));
  CFTFile buffered;
  buffered.Open(L"x", false);
  EXPECT_TRUE(std::filesystem::equivalent(buffered.GetName(), name));
  buffered.Close(true);
  buffered.Open(L".\\x", false);
  buffered.Close(true);
  const std::wstring fromRoot = name.substr(2);  // without its drive
  buffered.Open(fromRoot, false);
  EXPECT_EQ(buffered.GetName().substr(1), name.substr(1));
  std::filesystem::current_path(before);
}

TEST(WindowsModule, TheSearchDirectoryComesBack) {
  const auto searched = [] {
    wchar_t text[MAX_PATH] = L"";
    return std::wstring(text, GetDllDirectoryW(MAX_PATH, text));
  };
  for (const std::wstring& before : {std::wstring(), std::wstring(L"C:\\windows")}) {
    ASSERT_NE(SetDllDirectoryW(before.empty() ? nullptr : before.c_str()), 0);
    {
      const platform::ModuleSearchScope scope(L"C:\\");
      EXPECT_EQ(searched(), L"C:\\");
    }
    EXPECT_EQ(searched(), before);
  }
  SetDllDirectoryW(nullptr);
}

TEST_F(WindowsFile, TheErrorModeComesBack) {
  constexpr UINT kGuardMode = SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX;
  const UINT before = SetErrorMode(0);
  {
    const platform::ErrorModeGuard outer;
    EXPECT_EQ(GetErrorMode(), kGuardMode);
    { const platform::ErrorModeGuard inner; }
    EXPECT_EQ(GetErrorMode(), kGuardMode) << "until the last one is gone";
  }
  EXPECT_EQ(GetErrorMode(), 0U);
  {
    const platform::ErrorModeGuard guard;
    SetErrorMode(SEM_NOGPFAULTERRORBOX);
  }
  EXPECT_EQ(GetErrorMode(), UINT{SEM_NOGPFAULTERRORBOX}) << "somebody else's change survives";
  SetErrorMode(before);
}

}  // namespace
