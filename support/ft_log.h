// CFTLog: a diagnostic log.
#pragma once

#include <atomic>
#include <cstdio>
#include <string>

#include "support/recursive_lock.h"

namespace Quorvex {

/// What a log does with a message. All off: with no file name either, nothing.
struct LogFlags {
  bool debugger = false;
  bool standardOutput = false;
  bool standardError = false;
  bool appendLineEnd = false;
  bool closeAfterWrite = false;  ///< the file is closed after each message
  bool timeStamp = false;        ///< "[Sat Nov 21 14:56:06 2026] ", local time
  bool threadTag = false;        ///< "{0000000000001A2C} ", the thread's id
};

/// Formats messages and sends each as one line to a file, the debugger, standard output and
/// standard error, in this order, as far as they are wanted.
///
/// The file is UTF-16, little-endian, with a byte-order mark. Several processes may write to one:
/// each line goes to the end of it, whole. A file that does not exist yet, or is empty, begins with
/// the mark and the header text.
///
/// A line feed in a message that has no carriage return before it gets one, on every system. On
/// standard output and standard error the line is a format once more: "%%" in it prints one
/// per-cent sign, any other per-cent sign prints itself.
///
/// Nothing is ever reported to the caller. A message is dropped when another thread holds the log
/// for 1,000 ms; the file is left out when it cannot be opened in ten tries, 100 ms apart, when
/// another process holds it for 1,000 ms, or when the disk is full. Any thread.
class CFTLog {
 public:
  CFTLog(bool debugger, bool appendLineEnd);
  /// Closes the file.
  virtual ~CFTLog();
  CFTLog(const CFTLog&) = delete;
  CFTLog& operator=(const CFTLog&) = delete;

  /// Formats one message as printf does, and cuts it after 1,023 characters. On every system "%s"
  /// takes wide text and "%c" a wide character, "%p" prints 16 upper-case hexadecimal digits, and
  /// everything else means what ISO C says. There is no conversion for narrow text: widen it.
  void Printf(const wchar_t* format, ...) noexcept;

  /// Sends one message that is formatted already. Of any length.
  void Write(const wchar_t* text) noexcept;

  /// Says where messages go from now on. Both may throw std::bad_alloc.
  /// @param fileName  the log file; empty: none.
  void SetDestinations(const std::wstring& fileName, const LogFlags& flags);
  /// What a new file begins with, to the letter: bring line ends along.
  void SetHeader(const std::wstring& header);

  /// Whether no message goes anywhere: then arguments need not be made.
  bool IsSilent() const noexcept { return silent_.load(std::memory_order_relaxed); }

  /// The log's lock, for tests.
  RecursiveLock& Lock() noexcept { return lock_; }

 private:
  static constexpr std::size_t kMessageCapacity = 1024;

  std::wstring MakeLine(const wchar_t* text) const;
  void Send(const std::wstring& line);
  void WriteToFile(const std::wstring& line);
  bool OpenFile();
  bool Append(const std::wstring& line);
  void CloseFile() noexcept;
  void NoteDestinations() noexcept;

  std::wstring fileName_;  // empty: no file
  std::wstring header_;
  std::FILE* stream_ = nullptr;  // null: closed
  RecursiveLock lock_;           // guards everything here but silent_
  LogFlags flags_;
  wchar_t message_[kMessageCapacity];
  std::atomic<bool> silent_{true};
};

/// The library's own log. Silent until MediaAccessorSetLog gives it a destination; appends line
/// ends.
CFTLog& LibraryLog() noexcept;

}  // namespace Quorvex
