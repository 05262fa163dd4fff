// Files where a POSIX system differs: permissions, pipes, names, and no exclusive opening.
#include <MediaAccessor/all.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

#include <filesystem>
#include <memory>

#include "platform/ft_file_impl.h"
#include "platform/pending_file.h"
#include "platform/shared_stream.h"
#include "platform/text.h"
#include "support/ft_file.h"
#include "support/ft_log.h"
#include "tests/test_files.h"
#include "tests/thrown_code.h"

namespace {

using namespace Quorvex;
using tests::ThrownCode;

class PosixFile : public testing::Test {
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

// Nobody's rights, for those who have all of them.
class WithoutPrivileges {
 public:
  WithoutPrivileges() {
    if (id_ == 0 && seteuid(65534) != 0) ADD_FAILURE();
  }
  ~WithoutPrivileges() {
    if (id_ == 0 && seteuid(0) != 0) ADD_FAILURE();
  }

 private:
  const uid_t id_ = geteuid();
};

TEST_F(PosixFile, RefusalsByPermission) {
  const std::wstring readable = Existing("readable");
  const std::wstring unreadable = Existing("unreadable");
  chmod(directory.File("").c_str(), 0755);
  chmod(directory.File("readable").c_str(), 0444);
  chmod(directory.File("unreadable").c_str(), 0);
  const WithoutPrivileges scope;
  EXPECT_EQ(Open(readable, false), QVERR_OK);
  EXPECT_EQ(Open(readable, true), QVERR_ACCESS_DENIED);
  EXPECT_EQ(Open(unreadable, false), QVERR_FILE_OPEN_FAILED);
  EXPECT_EQ(Open(unreadable, true), QVERR_ACCESS_DENIED);
  EXPECT_EQ(ThrownCode([&] { file->Create(readable.c_str()); }), QVERR_ACCESS_DENIED);
}

TEST_F(PosixFile, APipeIsNeverWaitedFor) {
  ASSERT_EQ(mkfifo(directory.File("pipe").c_str(), 0666), 0);
  const std::wstring pipe = platform::Widen(directory.File("pipe"));
  EXPECT_EQ(Open(pipe, false), QVERR_FILE_OPEN_FAILED);
  EXPECT_EQ(Open(pipe, true), QVERR_FILE_OPEN_FAILED);
  EXPECT_EQ(ThrownCode([&] { file->Create(pipe.c_str()); }), QVERR_FILE_CREATE_FAILED);
  EXPECT_EQ(platform::OpenRegularStream(pipe.c_str(), false), nullptr);
  EXPECT_EQ(platform::OpenRegularStream(pipe.c_str(), true), nullptr);
}

TEST_F(PosixFile, SeveralMayWrite) {
  const std::wstring name = Existing("x");
  const std::unique_ptr<CFTFileImpl> other(platform::CreateFTFileImpl());
  ASSERT_EQ(Open(name, false), QVERR_OK);
  EXPECT_EQ(ThrownCode([&] { other->Open(name.c_str(), true); }), QVERR_OK);
}

TEST_F(PosixFile, ANameThatNoBytesStandFor) {
  const std::wstring name = platform::Widen(directory.File("")) + wchar_t{0xD800};
  Existing("?");
  Existing("?.wav");
  EXPECT_EQ(Open(name, true), QVERR_FILE_OPEN_FAILED);
  EXPECT_EQ(ThrownCode([&] { file->Create(name.c_str()); }), QVERR_FILE_CREATE_FAILED);
  EXPECT_EQ(ThrownCode([&] { file->Delete(name.c_str()); }), QVERR_FILE_WRITE_FAILED);
  EXPECT_TRUE(std::filesystem::exists(directory.File("?")));
  EXPECT_EQ(ThrownCode([&] { CFTFile().Open(name, false); }), QVERR_FILE_OPEN_FAILED);
  MediaFilePtr opened;
  EXPECT_EQ(MediaFileOpen((name + L".wav").c_str(), opened), QVERR_FILE_OPEN_FAILED);
}

TEST_F(PosixFile, NothingToResolveANameAgainst) {
  const auto before = std::filesystem::current_path();
  std::filesystem::create_directory(directory.File("gone"));
  std::filesystem::current_path(directory.File("gone"));
  std::filesystem::remove(directory.File("gone"));
  EXPECT_EQ(ThrownCode([] { CFTFile().Open(L"x", false); }), QVERR_BAD_FILE_NAME);
  std::filesystem::current_path(before);
}

TEST_F(PosixFile, DescriptorsAreGivenBackOnce) {
  const auto openDescriptors = [] {
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return std::distance(begin(all), end(all));
  };
  const std::wstring name = Existing("x");
  const auto before = openDescriptors();
  for (const bool closed : {true, false}) {
    const std::unique_ptr<CFTFileImpl> other(platform::CreateFTFileImpl());
    other->Open(name.c_str(), true);
    ASSERT_NE(other->GetStream(), nullptr);
    EXPECT_EQ(openDescriptors(), before + 1);
    if (closed) other->Close();
  }
  EXPECT_EQ(openDescriptors(), before);
}

// A limit on the size of files stands for a full disk.
TEST_F(PosixFile, AFullDiskLeavesWholeLinesInALog) {
  const std::string path = directory.File("x.log");
  CFTLog log(false, true);
  log.SetDestinations(platform::Widen(path), {.appendLineEnd = true});
  log.Write(L"first");
  const auto whole = tests::ReadBytes(path);
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  std::signal(SIGXFSZ, SIG_IGN);
  const rlimit limit{whole.size() + 5, before.rlim_max};
  setrlimit(RLIMIT_FSIZE, &limit);
  log.Write(L"second");
  setrlimit(RLIMIT_FSIZE, &before);
  EXPECT_EQ(tests::ReadBytes(path), whole);
  log.Write(L"third");
  EXPECT_EQ(tests::ReadBytes(path).size(), whole.size() + 14);
}

// What is replaced keeps its permissions, and a link stays one.
TEST_F(PosixFile, WhatAPendingFileReplaces) {
  const std::wstring name = Existing("x");
  const auto replace = [](const std::wstring& path) {
    platform::PendingFile pending;
    const QVERRORCODE_TAG code = pending.Create(path.c_str(), true);
    return code == QVERR_OK ? pending.Publish() : code;
  };
  for (const mode_t mode : {0600U, 0755U, 0440U}) {
    chmod(directory.File("x").c_str(), mode);
    ASSERT_EQ(replace(name), QVERR_OK);
    struct stat status {};
    stat(directory.File("x").c_str(), &status);
    EXPECT_EQ(status.st_mode & 0777U, mode);
  }
  std::filesystem::create_symlink("x", directory.File("link"));
  std::filesystem::create_symlink("nowhere", directory.File("dangling"));
  tests::WriteBytes(directory.File("x"), {1});
  EXPECT_EQ(replace(platform::Widen(directory.File("link"))), QVERR_OK);
  EXPECT_TRUE(std::filesystem::is_symlink(directory.File("link")));
  EXPECT_TRUE(std::filesystem::is_empty(directory.File("x")));
  EXPECT_EQ(replace(platform::Widen(directory.File("dangling"))), QVERR_FILE_CREATE_FAILED);
  EXPECT_EQ(replace(name + L"/below"), QVERR_PATH_NOT_FOUND);
  chmod(directory.File("").c_str(), 0777);
  const WithoutPrivileges scope;
  EXPECT_EQ(replace(name), QVERR_ACCESS_DENIED) << "writable by its owner alone";
}

}  // namespace
