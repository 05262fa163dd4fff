// The log: what stands in its file, what is printed, and what happens when it cannot be written.
#include "support/ft_log.h"

#include <MediaAccessor/all.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "platform/shared_stream.h"
#include "platform/text.h"
#include "platform/thread.h"
#include "tests/test_files.h"
#include "tests/test_system.h"

namespace {

using namespace Quorvex;

std::u16string ReadUtf16(const std::string& path) {
  const tests::Bytes bytes = tests::ReadBytes(path);
  EXPECT_EQ(bytes.size() % 2, 0U);
  std::u16string text;
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    text += static_cast<char16_t>(bytes[i] | bytes[i + 1] << 8);
  }
  return text;
}

class FTLog : public testing::Test {
 protected:
  void LogToFile(LogFlags flags = {.appendLineEnd = true}) {
    log.SetDestinations(platform::Widen(path), flags);
  }
  std::u16string Logged() const { return ReadUtf16(path); }
  // The log's only line, without the byte-order mark.
  std::string OnlyLine() const {
    const std::u16string text = Logged();
    return text.empty() ? "" : std::string(text.begin() + 1, text.end());
  }

  const tests::TemporaryDirectory directory;
  const std::string path = directory.File("x.log");
  CFTLog log{false, true};
};

TEST_F(FTLog, ANewFileBeginsWithMarkAndHeader) {
  log.SetHeader(L"Header \U0001D11E\r\n");
  LogToFile();
  log.Write(L"first");
  const tests::Bytes bytes = tests::ReadBytes(path);
  ASSERT_GE(bytes.size(), 4U);
  EXPECT_EQ(tests::Bytes(bytes.begin(), bytes.begin() + 4), (tests::Bytes{0xFF, 0xFE, 'H', 0}));
  log.Write(L"second");
  EXPECT_EQ(Logged(), u"\uFEFFHeader \U0001D11E\r\nfirst\r\nsecond\r\n");
  // Neither is repeated in a file that is there.
  CFTLog other(false, false);
  other.SetHeader(L"Other header");
  other.SetDestinations(platform::Widen(path), {});
  other.Write(L"third");
  log.Write(L"fourth");
  EXPECT_EQ(Logged(), u"\uFEFFHeader \U0001D11E\r\nfirst\r\nsecond\r\nthirdfourth\r\n");
}

TEST_F(FTLog, LineFeedsGetTheirCarriageReturn) {
  LogToFile();
  log.Write(L"\na\nb\r\nc\r\n\nd\r");
  EXPECT_EQ(Logged(), u"\uFEFF\r\na\r\nb\r\nc\r\n\r\nd\r\r\n");
}

TEST_F(FTLog, FormatsTheSameOnEverySystem) {
  LogToFile();
  const wchar_t* const name = L"t\u00FC\u65E5\U0001D11E";
  log.Printf(L"%s|%5.1s|%-3ls|%c|%d %+.2f %lu %llx|%%|%p|%20p", name, name, L"x", L'\u20AC', -7,
             2.5, 4'000'000'000UL, 0xABCDEF0123ULL, reinterpret_cast<void*>(std::uintptr_t{0x1a2b}),
             nullptr);
  EXPECT_EQ(Logged(),
            u"\uFEFFt\u00FC\u65E5\U0001D11E|    t|x  |\u20AC|-7 +2.50 4000000000 abcdef0123|%|"
            u"0000000000001A2B|    0000000000000000\r\n");
}

TEST_F(FTLog, AMessageIsCutAfter1023Characters) {
  LogToFile();
  const std::wstring longText(5000, L'x');
  for (const std::size_t length : {std::size_t{1023}, std::size_t{1024}, std::size_t{5000}}) {
    log.Printf(L"%s", longText.substr(0, length).c_str());
  }
  const std::u16string line = std::u16string(1023, u'x') + u"\r\n";
  EXPECT_EQ(Logged(), u"\uFEFF" + line + line + line);
  log.Write(longText.c_str());
  EXPECT_EQ(Logged().size(), 1 + 3 * 1025 + 5002U) << "what is formatted already is not cut";
}

TEST_F(FTLog, PrefixesInTheirOrder) {
  LogToFile({.timeStamp = true, .threadTag = true});
  log.Write(L"message");
  const std::string line = OnlyLine();
  char weekday[4] = "";
  char month[4] = "";
  char id[17] = "";
  int numbers[5] = {};
  EXPECT_EQ(
      std::sscanf(line.c_str(), "[%3s %3s %2d %2d:%2d:%2d %4d] {%16[0-9A-F]} message", weekday,
                  month, &numbers[0], &numbers[1], &numbers[2], &numbers[3], &numbers[4], id),
      8)
      << line;
  EXPECT_EQ(line.size(),
            std::string("[Sat Nov 21 14:56:06 2026] {0000000000001A2C} message").size());
  EXPECT_TRUE(line.ends_with("} message"));
  EXPECT_NE(line[9], '0') << "the first nine days of a month have one digit";
  EXPECT_EQ(std::strtoull(id, nullptr, 16), platform::CurrentThreadId());
}

TEST_F(FTLog, ClosesTheFileAfterEachMessageWhenAsked) {
  LogToFile({.closeAfterWrite = true});
  log.Write(L"first");
  std::filesystem::rename(path, directory.File("old.log"));
  log.Write(L"second");
  EXPECT_EQ(ReadUtf16(directory.File("old.log")), u"\uFEFFfirst");
  EXPECT_EQ(Logged(), u"\uFEFFsecond");
}

// The finished line is a format: a doubled per-cent sign is printed once, any other as it is.
TEST_F(FTLog, PrintedLinesAreFormattedOnceMore) {
  const std::string out = directory.File("out");
  const std::string err = directory.File("err");
  const auto contents = [](const std::string& file) {
    const tests::Bytes bytes = tests::ReadBytes(file);
    std::string text(bytes.begin(), bytes.end());
    std::erase(text, '\r');
    return text;
  };
  const std::string message = "100%% %s %n %%% %%%% 5%";
  const std::string printed = "100% %s %n %% %% 5%\n";
  ASSERT_EQ(tests::Process({MEDIA_ACCESSOR_LOG_WRITER, "print", message}, out, err).Wait(), 0);
  EXPECT_EQ(contents(out), "narrow before\n" + printed + "narrow after\n");
  EXPECT_EQ(contents(err), (tests::kDebuggerIsStandardError ? message + "\n" : "") + printed);
}

TEST_F(FTLog, SeveralProcessesLoseNoLine) {
  constexpr int kProcesses = 4;
  constexpr int kLines = 200;
  std::vector<tests::Process> writers;
  std::multiset<std::u16string> expected;
  for (int p = 0; p < kProcesses; ++p) {
    const std::string tag = "writer" + std::to_string(p);
    writers.emplace_back(std::vector<std::string>{MEDIA_ACCESSOR_LOG_WRITER, "file", path,
                                                  std::to_string(kLines), tag});
    for (int i = 0; i < kLines; ++i) {
      expected.insert(platform::ToUtf16(platform::Widen(tag + " " + std::to_string(i))));
    }
  }
  for (tests::Process& writer : writers) EXPECT_EQ(writer.Wait(), 0);
  std::u16string text = Logged();
  const std::u16string beginning = u"\uFEFFThe header\r\n";
  ASSERT_TRUE(text.starts_with(beginning));
  text.erase(0, beginning.size());
  std::multiset<std::u16string> lines;
  for (std::size_t end = 0; (end = text.find(u"\r\n")) != std::u16string::npos;
       text.erase(0, end + 2)) {
    lines.insert(text.substr(0, end));
  }
  EXPECT_TRUE(text.empty());
  EXPECT_TRUE(lines == expected) << lines.size() << " lines";
}

TEST_F(FTLog, ThreadsShareOneLog) {
  LogToFile();
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < 50; ++i) log.Printf(L"%s", L"0123456789");
    });
  }
  for (std::thread& thread : threads) thread.join();
  std::u16string expected = u"\uFEFF";
  for (int i = 0; i < 200; ++i) expected += u"0123456789\r\n";
  EXPECT_EQ(Logged(), expected);
}

TEST_F(FTLog, AMessageThatMeetsALockIsDropped) {
  LogToFile();
  ASSERT_TRUE(log.Lock().Acquire(1));
  std::thread([&] { log.Printf(L"dropped"); }).join();
  log.Lock().Release();
  log.Printf(L"first");
  // The file's lock, held by another stream as by another process.
  std::FILE* stream = nullptr;
  ASSERT_EQ(platform::OpenSharedStream(platform::Widen(path).c_str(), stream),
            platform::StreamOpening::kOpened);
  ASSERT_TRUE(platform::TryLock(stream));
  log.Printf(L"dropped");
  platform::Unlock(stream);
  log.Printf(L"second");
  std::fclose(stream);
  EXPECT_EQ(Logged(), u"\uFEFFfirst\r\nsecond\r\n");
}

TEST_F(FTLog, AFileThatCannotBeOpenedStopsNothing) {
  std::filesystem::create_directory(directory.File("directory"));
  for (const char* name : {"directory", "no/such/x.log"}) {
    log.SetDestinations(platform::Widen(directory.File(name)), {.standardOutput = true});
    testing::internal::CaptureStdout();
    log.Printf(L"message");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "message") << name;
  }
}

TEST_F(FTLog, CreationIsExclusive) {
  const std::wstring name = platform::Widen(path);
  std::FILE* stream = nullptr;
  EXPECT_EQ(platform::OpenSharedStream(name.c_str(), stream), platform::StreamOpening::kMissing);
  ASSERT_EQ(platform::CreateSharedStream(name.c_str(), stream), platform::StreamOpening::kOpened);
  std::fputs("xy", stream);
  std::fclose(stream);
  EXPECT_EQ(platform::CreateSharedStream(name.c_str(), stream), platform::StreamOpening::kExists);
  EXPECT_EQ(stream, nullptr);
  EXPECT_EQ(tests::ReadBytes(path).size(), 2U) << "the first one's file is left alone";
}

TEST_F(FTLog, TheLibrarysLogTakesEveryFlag) {
  EXPECT_EQ(MediaAccessorSetLog(path.c_str(), 64), QVERR_INVALID_ARGUMENT);
  EXPECT_TRUE(LibraryLog().IsSilent()) << "as from the beginning";
  EXPECT_FALSE(CFTLog(true, true).IsSilent());
  ASSERT_EQ(MediaAccessorSetLog(path.c_str(), kLogStandardOutput | kLogTimeStamp | kLogThreadTag |
                                                  kLogCloseAfterWrite),
            QVERR_OK);
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  LibraryLog().Write(L"message");
  EXPECT_NE(testing::internal::GetCapturedStdout().find("} message"), std::string::npos);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(OnlyLine().size(),
            std::string("[Sat Nov 21 14:56:06 2026] {0000000000001A2C} message\r\n").size());
  std::filesystem::rename(path, directory.File("old.log"));  // closed, so Windows allows it
  ASSERT_EQ(MediaAccessorSetLog(platform::Widen(path).c_str(), kLogDebugger), QVERR_OK);
  testing::internal::CaptureStderr();
  LibraryLog().Write(L"second");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            tests::kDebuggerIsStandardError ? "second\r\n" : "");
  EXPECT_EQ(OnlyLine(), "second\r\n");
  ASSERT_EQ(MediaAccessorSetLog("", 0), QVERR_OK);
  EXPECT_TRUE(LibraryLog().IsSilent());
}

}  // namespace
