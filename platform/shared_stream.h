// Stdio streams: on a file that several processes append to, and on a file that is read in place.
#pragma once

#include <cstdint>
#include <cstdio>

namespace Quorvex::platform {

enum class StreamOpening {
  kOpened,
  kMissing,  ///< OpenSharedStream: there is no such file
  kExists,   ///< CreateSharedStream: somebody was faster
  kFailed,
};

/// Opens an existing file for reading and writing, in binary. May throw std::bad_alloc.
/// @param stream  receives the stream, owned by the caller; null on failure.
StreamOpening OpenSharedStream(const wchar_t* path, std::FILE*& stream);

/// The same for a file that must not exist yet, and that is created.
StreamOpening CreateSharedStream(const wchar_t* path, std::FILE*& stream);

/// Opens an existing regular file in binary: "rb", or "r+b" to write in place too. What is no
/// regular file (a directory, a pipe) is not opened and never waited for. May throw std::bad_alloc.
/// @return the stream, owned by the caller; null on failure.
std::FILE* OpenRegularStream(const wchar_t* path, bool write);

/// Moves to a position in bytes from the start, which may lie beyond the end.
bool SeekTo(std::FILE* stream, std::int64_t position) noexcept;

/// Moves to the end of the file.
/// @param position  receives it, in bytes.
bool SeekToEnd(std::FILE* stream, std::int64_t& position) noexcept;

/// Cuts the file off at a position, dropping what is beyond it.
void CutAt(std::FILE* stream, std::int64_t position) noexcept;

/// Takes the lock of the stream's file unless another stream, of whatever process, has it: false.
/// On a file system that knows no locks everybody gets it. It ends with the stream at the latest.
bool TryLock(std::FILE* stream) noexcept;
void Unlock(std::FILE* stream) noexcept;

}  // namespace Quorvex::platform
