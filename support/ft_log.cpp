// A message on its way: format, cut, decorate, mend line ends, send to each destination in turn.
#include "support/ft_log.h"

#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <cwchar>
#include <iterator>
#include <new>
#include <string_view>

#include "platform/diagnostics.h"
#include "platform/shared_stream.h"
#include "platform/text.h"
#include "platform/thread.h"
#include "support/no_throw.h"

namespace Quorvex {
namespace {

constexpr int kLockLimit = 1000;  // ms, for other threads and for other processes
constexpr int kOpeningTries = 10;
constexpr int kOpeningInterval = 100;  // ms
constexpr wchar_t kByteOrderMark = 0xFEFF;

// The format in the words of ISO C: "%s" and "%c" with their wide forms' prefix; "%p", which every
// system prints in its own way, as a number. A pointer is passed like one.
std::wstring IsoFormat(std::wstring_view format) {
  static_assert(sizeof(void*) == sizeof(unsigned long long));
  std::wstring iso;
  while (!format.empty()) {
    if (format.front() != L'%') {
      iso += format.front();
      format.remove_prefix(1);
      continue;
    }
    const std::size_t precision =
        std::min(format.find_first_not_of(L"-+ #0123456789*", 1), format.size());
    const std::size_t end =
        std::min(format.find_first_not_of(L".0123456789*", precision), format.size());
    const wchar_t conversion = end < format.size() ? format[end] : L'\0';
    iso += format.substr(0, conversion == L'p' ? precision : end);
    if (conversion == L'p') {
      iso += L".16llX";
    } else {
      if (conversion == L's' || conversion == L'c') iso += L'l';
      if (conversion != L'\0') iso += conversion;
    }
    format.remove_prefix(std::min(end + 1, format.size()));
  }
  return iso;
}

std::wstring ThreadTag() {
  wchar_t tag[32];
  std::swprintf(tag, std::size(tag), L"{%.16llX} ",
                static_cast<unsigned long long>(platform::CurrentThreadId()));
  return tag;
}

// A line as a format that prints it, and takes no arguments: per-cent signs in pairs stay pairs,
// which the printing turns into one, on purpose; a single one becomes a pair.
std::wstring WithoutArguments(std::wstring_view line) {
  std::wstring format;
  for (std::size_t i = 0; i < line.size(); ++i) {
    format += line[i];
    if (line[i] != L'%') continue;
    format += L'%';
    if (i + 1 < line.size() && line[i + 1] == L'%') ++i;
  }
  return format;
}

// Narrow streams, to which fwprintf could not bring every character (on Linux none at all), stay
// narrow and get narrow text.
void PrintFormat(std::FILE* stream, const std::wstring& format) {
  if (platform::IsWide(stream)) {
    std::fwprintf(stream, format.c_str());
  } else {
    std::fprintf(stream, platform::Narrow(format).c_str(), nullptr);  // takes no argument
  }
  std::fflush(stream);
}

bool WriteUtf16(std::FILE* stream, std::wstring_view text) {
  std::string bytes;
  for (const char16_t unit : platform::ToUtf16(text)) {
    bytes += static_cast<char>(unit & 0xFF);
    bytes += static_cast<char>(unit >> 8);
  }
  return std::fwrite(bytes.data(), 1, bytes.size(), stream) == bytes.size() &&
         std::fflush(stream) == 0;
}

bool WaitForLock(std::FILE* stream) {
  LockBackOff backOff(kLockLimit);
  while (!platform::TryLock(stream)) {
    int sleep = 0;
    if (!backOff.Next(sleep)) return false;
    platform::SleepMilliseconds(sleep);
  }
  return true;
}

}  // namespace

CFTLog::CFTLog(bool debugger, bool appendLineEnd) {
  flags_.debugger = debugger;
  flags_.appendLineEnd = appendLineEnd;
  NoteDestinations();
}

CFTLog::~CFTLog() { CloseFile(); }

void CFTLog::Printf(const wchar_t* format, ...) noexcept {
  if (IsSilent()) return;
  const RecursiveLockGuard guard(lock_, kLockLimit);
  if (!guard) return;
  std::va_list arguments;
  va_start(arguments, format);
  NoThrow([&] {
    platform::FormatWide(message_, kMessageCapacity, IsoFormat(format).c_str(), arguments);
    Write(message_);
    return QVERR_OK;
  });
  va_end(arguments);
}

void CFTLog::Write(const wchar_t* text) noexcept {
  if (IsSilent()) return;
  const RecursiveLockGuard guard(lock_, kLockLimit);
  if (!guard) return;
  NoThrow([&] {
    Send(MakeLine(text));
    return QVERR_OK;
  });
}

std::wstring CFTLog::MakeLine(const wchar_t* text) const {
  std::wstring line;
  if (flags_.timeStamp) line += L"[" + platform::LocalTimeText() + L"] ";
  if (flags_.threadTag) line += ThreadTag();
  for (wchar_t previous = L'\0'; *text != L'\0'; previous = *text++) {
    if (*text == L'\n' && previous != L'\r') line += L'\r';
    line += *text;
  }
  if (flags_.appendLineEnd) line += L"\r\n";
  return line;
}

void CFTLog::Send(const std::wstring& line) {
  WriteToFile(line);
  if (flags_.debugger) platform::WriteToDebugger(line);
  if (flags_.standardOutput) PrintFormat(stdout, WithoutArguments(line));
  if (flags_.standardError) PrintFormat(stderr, WithoutArguments(line));
}

void CFTLog::WriteToFile(const std::wstring& line) {
  if (fileName_.empty() || !OpenFile()) return;
  bool written = false;
  if (WaitForLock(stream_)) {
    written = NoThrowOr(false, [&] { return Append(line); });
    platform::Unlock(stream_);
  }
  // After a failure the next message tries it afresh.
  if (flags_.closeAfterWrite || !written) CloseFile();
}

bool CFTLog::OpenFile() {
  for (int tries = 0; stream_ == nullptr && tries < kOpeningTries; ++tries) {
    platform::StreamOpening opening = platform::OpenSharedStream(fileName_.c_str(), stream_);
    if (opening == platform::StreamOpening::kMissing) {
      opening = platform::CreateSharedStream(fileName_.c_str(), stream_);
      // Somebody else created it just now: theirs is opened. Any other failure is final.
      if (opening != platform::StreamOpening::kExists) break;
    } else if (stream_ == nullptr) {
      platform::SleepMilliseconds(kOpeningInterval);
    }
  }
  return stream_ != nullptr;
}

// Between the file's lock and its release. An empty file is a new one, whoever created it.
bool CFTLog::Append(const std::wstring& line) {
  std::int64_t position = 0;
  if (!platform::SeekToEnd(stream_, position)) return false;
  if ((position > 0 || WriteUtf16(stream_, kByteOrderMark + header_)) &&
      WriteUtf16(stream_, line)) {
    return true;
  }
  // The disk is full. What arrived goes too, so that the next line begins where this one did.
  platform::CutAt(stream_, position);
  return false;
}

void CFTLog::CloseFile() noexcept {
  if (stream_ != nullptr) std::fclose(stream_);
  stream_ = nullptr;
}

void CFTLog::SetDestinations(const std::wstring& fileName, const LogFlags& flags) {
  const RecursiveLockGuard guard(lock_, RecursiveLock::kWaitForever);
  fileName_ = fileName;
  flags_ = flags;
  CloseFile();
  NoteDestinations();
}

void CFTLog::SetHeader(const std::wstring& header) {
  const RecursiveLockGuard guard(lock_, RecursiveLock::kWaitForever);
  header_ = header;
}

void CFTLog::NoteDestinations() noexcept {
  silent_.store(
      fileName_.empty() && !flags_.debugger && !flags_.standardOutput && !flags_.standardError,
      std::memory_order_relaxed);
}

CFTLog& LibraryLog() noexcept {
  // Never destroyed: it may be written to while the process ends.
  alignas(CFTLog) static unsigned char memory[sizeof(CFTLog)];
  static auto& log = *new (memory) CFTLog(false, true);
  return log;
}

}  // namespace Quorvex
