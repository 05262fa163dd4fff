// Streams over open and fdopen; the lock is flock, which belongs to the open file.
#include "platform/shared_stream.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "platform/posix/file_name.h"

namespace Quorvex::platform {
namespace {

StreamOpening Open(const wchar_t* path, int flags, std::FILE*& stream) {
  stream = nullptr;
  std::string name;
  if (!SystemFileName(path, name)) return StreamOpening::kFailed;
  // O_NONBLOCK: opening a pipe must not wait for its other end.
  const int descriptor = ::open(name.c_str(), flags | O_CLOEXEC | O_NONBLOCK, 0666);
  if (descriptor < 0) {
    if (errno == ENOENT) return StreamOpening::kMissing;
    return errno == EEXIST ? StreamOpening::kExists : StreamOpening::kFailed;
  }
  stream = ::fdopen(descriptor, (flags & O_RDWR) != 0 ? "r+b" : "rb");
  if (stream != nullptr) return StreamOpening::kOpened;
  ::close(descriptor);
  return StreamOpening::kFailed;
}

}  // namespace

StreamOpening OpenSharedStream(const wchar_t* path, std::FILE*& stream) {
  return Open(path, O_RDWR, stream);
}

StreamOpening CreateSharedStream(const wchar_t* path, std::FILE*& stream) {
  return Open(path, O_RDWR | O_CREAT | O_EXCL, stream);
}

std::FILE* OpenRegularStream(const wchar_t* path, bool write) {
  std::FILE* stream = nullptr;
  if (Open(path, write ? O_RDWR : O_RDONLY, stream) != StreamOpening::kOpened) return nullptr;
  struct stat status {};
  if (::fstat(::fileno(stream), &status) == 0 && S_ISREG(status.st_mode)) return stream;
  std::fclose(stream);
  return nullptr;
}

bool SeekTo(std::FILE* stream, std::int64_t position) noexcept {
  return ::fseeko(stream, position, SEEK_SET) == 0;
}

bool SeekToEnd(std::FILE* stream, std::int64_t& position) noexcept {
  if (::fseeko(stream, 0, SEEK_END) != 0) return false;
  position = ::ftello(stream);
  return position >= 0;
}

void CutAt(std::FILE* stream, std::int64_t position) noexcept {
  // Nothing can be done about a failure, which is one more of the disk.
  [[maybe_unused]] const int result = ::ftruncate(::fileno(stream), position);
}

bool TryLock(std::FILE* stream) noexcept {
  return ::flock(::fileno(stream), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

void Unlock(std::FILE* stream) noexcept { ::flock(::fileno(stream), LOCK_UN); }

}  // namespace Quorvex::platform
