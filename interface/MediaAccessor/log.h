// The library's log: which plug-in modules were loaded or skipped and why, and which format took a
// file or refused it. Silent until it is given a destination.
#pragma once

#include <MediaAccessor/export.h>
#include <MediaAccessor/result_code.h>

namespace Quorvex {

/// What the log does besides writing to its file. Combine with |.
enum MediaAccessorLogFlag : unsigned long {
  kLogDebugger = 1,         ///< send each line to the debugger; on Linux to standard error
  kLogStandardOutput = 2,   ///< print each line, "%%" in it as one per-cent sign
  kLogStandardError = 4,    ///< print each line on standard error
  kLogCloseAfterWrite = 8,  ///< close the file after each line
  kLogTimeStamp = 16,       ///< begin each line with "[Sat Nov 21 14:56:06 2026] ", local time
  kLogThreadTag = 32,       ///< then "{0000000000001A2C} ", the thread's id
};

/// Says where the library's log goes from now on.
/// @param fileName  a text file, appended to, or created when it is missing: UTF-16, little-endian,
///                  with a byte-order mark, lines ended by "\r\n". Several processes may share one.
///                  Null or empty: no file. A relative name is resolved at each opening. A file
///                  that cannot be written to is no failure here: its lines are lost.
///                  One that cannot be opened costs the caller of a library function up to a second
///                  for each line.
/// @param flags     MediaAccessorLogFlag values; 0 without a file name makes the log silent.
/// @return QVERR_OK; QVERR_INVALID_ARGUMENT for an unknown flag, nothing being changed;
///         QVERR_CREATE_FAILED when memory runs out. Any thread.
MEDIA_ACCESSOR_API QVERRORCODE_TAG MediaAccessorSetLog(const wchar_t* fileName,
                                                       unsigned long flags) noexcept;
/// The same for a narrow name.
MEDIA_ACCESSOR_API QVERRORCODE_TAG MediaAccessorSetLog(const char* fileName,
                                                       unsigned long flags) noexcept;

}  // namespace Quorvex
