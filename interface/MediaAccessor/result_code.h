// The one result enumeration of the library, and its values as text.
#pragma once

#include <MediaAccessor/export.h>

namespace Quorvex {

/// Result of every operation that can fail. 0 is success; each operation's comment lists the values
/// that it returns. An accessor, sink or factory of the application's own may return any of them.
enum QVERRORCODE_TAG : int {
  QVERR_OK = 0,               ///< success
  QVERR_NO_SINK = 1,          ///< a speech codec was used before it had a sink
  QVERR_NO_CHANNEL_MAP = 10,  ///< a file's channel interface was used before it had a channel map
  QVERR_FILE_OPEN_FAILED = 300,    ///< the file could not be opened, sized or positioned
  QVERR_FILE_IO = 301,             ///< a read, write or seek failed, or a data chunk is truncated
  QVERR_READ_PAST_END = 302,       ///< a read asked for bytes beyond the end of the file
  QVERR_FILE_CREATE_FAILED = 304,  ///< the file could not be created
  QVERR_FILE_WRITE_FAILED = 305,   ///< a header or data could not be written
  QVERR_BAD_FILE_NAME = 306,       ///< the file name is empty
  QVERR_FILE_NOT_FOUND = 307,      ///< the file does not exist
  QVERR_PATH_NOT_FOUND = 308,      ///< the directory does not exist
  QVERR_ACCESS_DENIED = 309,       ///< access to the file was refused
  QVERR_FILE_NOT_OPEN = 310,       ///< the operation needs an open file
  QVERR_ALREADY_OPEN = 311,      ///< open, or a setting that is fixed while open, on an open object
  QVERR_NO_SOURCE = 404,         ///< no source accessor, or no factory, was given
  QVERR_INVALID_ARGUMENT = 405,  ///< an argument was refused
  QVERR_NO_SAMPLING_FREQUENCY = 406,  ///< a writer was opened before its sampling frequency was set
  QVERR_CREATE_FAILED = 600,          ///< an object or memory that was needed could not be created
  QVERR_BAD_STATE = 603,              ///< not possible in the object's state or set-up
  QVERR_BUSY = 604,                   ///< the registry's lock could not be had within 1000 ms
  QVERR_BAD_FORMAT = 605,             ///< not of this format, or cannot be decoded
  QVERR_UNSUPPORTED_CHANNELS = 609,   ///< a channel count or selection that is not supported
  QVERR_BAD_TRACK = 610,              ///< a track number or id that the file does not have
  QVERR_MONO_ONLY = 614,          ///< a coding that is written only in mono was given more channels
  QVERR_BAD_CHANNEL_COUNT = 619,  ///< an input channel count below 1
  QVERR_NOT_LICENSED = 704,       ///< a speech codec was refused by the licence check
  QVERR_CODEC_NOT_LICENSED = 715,  ///< a licensed output coding was refused by the licence check
};

/// The name of a result code ("QVERR_BAD_FORMAT"). A value that is none of the codes above gives
/// "QVERR_UNKNOWN". The text is static, ASCII, never null. Any thread.
MEDIA_ACCESSOR_API const char* MediaAccessorGetResultName(QVERRORCODE_TAG code) noexcept;
/// The same as wide text.
MEDIA_ACCESSOR_API const wchar_t* MediaAccessorGetResultNameWide(QVERRORCODE_TAG code) noexcept;

/// What a result code means, as a phrase without a full stop ("not of this format, or cannot be
/// decoded"); "unknown result code" for any other value. Static, ASCII, never null. Any thread.
MEDIA_ACCESSOR_API const char* MediaAccessorGetResultMeaning(QVERRORCODE_TAG code) noexcept;
/// The same as wide text.
MEDIA_ACCESSOR_API const wchar_t* MediaAccessorGetResultMeaningWide(QVERRORCODE_TAG code) noexcept;

}  // namespace Quorvex
