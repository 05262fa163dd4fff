// A regular file over open, pread and close.
#include "platform/input_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <limits>
#include <string>

#include "platform/posix/file_name.h"

namespace Quorvex::platform {

bool InputFile::Open(const wchar_t* path) {
  Close();
  std::string name;
  if (!SystemFileName(path, name)) return false;
  // O_NONBLOCK: opening a pipe that nobody writes to must not wait. Regular files ignore it.
  const int descriptor = ::open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) return false;
  struct stat status {};
  if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
    ::close(descriptor);
    return false;
  }
  handle_ = descriptor;
  size_ = static_cast<std::uint64_t>(status.st_size);
  return true;
}

void InputFile::Close() noexcept {
  if (handle_ != kClosed) ::close(static_cast<int>(handle_));
  handle_ = kClosed;
  size_ = 0;
}

bool InputFile::IsOpen() const noexcept { return handle_ != kClosed; }

bool InputFile::ReadAt(std::uint64_t offset, void* buffer, std::size_t count,
                       std::size_t& got) noexcept {
  got = 0;
  while (got < count) {
    const std::uint64_t position = offset + got;
    if (position > static_cast<std::uint64_t>(std::numeric_limits<off_t>::max())) return true;
    const ssize_t read = ::pread(static_cast<int>(handle_), static_cast<char*>(buffer) + got,
                                 count - got, static_cast<off_t>(position));
    if (read == 0) return true;
    if (read > 0) {
      got += static_cast<std::size_t>(read);
    } else if (errno != EINTR) {
      return false;
    }
  }
  return true;
}

}  // namespace Quorvex::platform
