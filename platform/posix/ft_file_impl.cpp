// CPosixFTFileImpl: the file over open, read, write and lseek.
#include "platform/ft_file_impl.h"

#include <MediaAccessor/result_code.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <string>

#include "platform/file_stream.h"
#include "platform/posix/file_name.h"

namespace Quorvex::platform {
namespace {

constexpr int kClosed = -1;

bool DirectoryExists(const std::string& name) {
  const std::size_t slash = name.find_last_of('/');
  if (slash == std::string::npos) return true;  // the working directory
  struct stat status {};
  return ::stat(name.substr(0, slash + 1).c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

// The system has one error for a missing file and a missing directory; callers have two.
QVERRORCODE_TAG MissingCode(int error, const std::string& name, QVERRORCODE_TAG other) {
  if (error == ENOTDIR) return QVERR_PATH_NOT_FOUND;
  if (error != ENOENT) return other;
  return DirectoryExists(name) ? QVERR_FILE_NOT_FOUND : QVERR_PATH_NOT_FOUND;
}

bool IsRefusal(int error) { return error == EACCES || error == EPERM || error == EISDIR; }

class CPosixFTFileImpl final : public CFTFileImpl {
 public:
  CPosixFTFileImpl() = default;
  ~CPosixFTFileImpl() override { CloseAll(); }

  bool IsOpen() const noexcept override { return descriptor_ != kClosed; }

  void Create(const wchar_t* name) override {
    CloseAll();
    std::string bytes;
    if (!SystemFileName(name, bytes)) throw QVERR_FILE_CREATE_FAILED;
    if (OpenRegularFile(bytes, O_RDWR | O_CREAT | O_TRUNC)) return;
    throw IsRefusal(errno) ? QVERR_ACCESS_DENIED : QVERR_FILE_CREATE_FAILED;
  }

  void Open(const wchar_t* name, bool write) override {
    CloseAll();
    std::string bytes;
    if (!SystemFileName(name, bytes)) throw QVERR_FILE_OPEN_FAILED;
    if (OpenRegularFile(bytes, write ? O_RDWR : O_RDONLY)) return;
    if (write && IsRefusal(errno)) throw QVERR_ACCESS_DENIED;
    throw MissingCode(errno, bytes, QVERR_FILE_OPEN_FAILED);
  }

  void Close() override {
    if (!CloseAll()) throw QVERR_FILE_WRITE_FAILED;
  }

  void Delete(const wchar_t* name) override {
    std::string bytes;
    if (!SystemFileName(name, bytes)) throw QVERR_FILE_WRITE_FAILED;
    if (::unlink(bytes.c_str()) == 0) return;
    throw MissingCode(errno, bytes, QVERR_FILE_WRITE_FAILED);
  }

  void Seek(std::int64_t offset) override {
    if (::lseek(descriptor_, offset, SEEK_SET) < 0) throw QVERR_FILE_IO;
  }

  std::int64_t Tell() override {
    const off_t position = ::lseek(descriptor_, 0, SEEK_CUR);
    if (position < 0) throw QVERR_FILE_IO;
    return position;
  }

  std::int64_t GetSize() override { return Status().st_size; }

  std::int64_t GetModificationTime() override {
    if (modificationTime_ != 0) return modificationTime_;
    const struct stat status = Status();
    std::tm fields{};
    if (::gmtime_r(&status.st_mtime, &fields) == nullptr) throw QVERR_FILE_IO;
    fields.tm_isdst = 0;
    modificationTime_ = std::mktime(&fields);
    return modificationTime_;
  }

  std::istream* GetStream() override {
    if (stream_ == nullptr && IsOpen()) stream_ = FileStream::Make(*this);
    return stream_.get();
  }

  void Write(const std::uint8_t* data, std::uint32_t count) override {
    modificationTime_ = 0;
    if (!IsOpen()) throw QVERR_FILE_WRITE_FAILED;
    while (count > 0) {
      const ssize_t written = ::write(descriptor_, data, count);
      if (written < 0 && errno == EINTR) continue;
      if (written <= 0) throw QVERR_FILE_WRITE_FAILED;
      data += written;
      count -= static_cast<std::uint32_t>(written);
    }
  }

  void Read(std::uint8_t* data, std::uint32_t count) override {
    if (!IsOpen()) throw QVERR_FILE_IO;
    while (count > 0) {
      const ssize_t got = ::read(descriptor_, data, count);
      if (got < 0 && errno == EINTR) continue;
      if (got <= 0) throw QVERR_FILE_IO;
      data += got;
      count -= static_cast<std::uint32_t>(got);
    }
  }

 private:
  // On failure the reason is in errno. O_NONBLOCK: opening a pipe must not wait for its other end.
  bool OpenRegularFile(const std::string& name, int flags) {
    const int descriptor = ::open(name.c_str(), flags | O_CLOEXEC | O_NONBLOCK, 0666);
    if (descriptor < 0) return false;
    struct stat status {};
    if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
      ::close(descriptor);
      errno = EINVAL;
      return false;
    }
    descriptor_ = descriptor;
    return true;
  }

  bool CloseAll() noexcept {
    stream_.reset();
    // The descriptor is gone also when the call was interrupted.
    const bool closed = !IsOpen() || ::close(descriptor_) == 0 || errno == EINTR;
    descriptor_ = kClosed;
    modificationTime_ = 0;
    return closed;
  }

  struct stat Status() const {
    struct stat status {};
    if (::fstat(descriptor_, &status) != 0) throw QVERR_FILE_IO;
    return status;
  }

  int descriptor_ = kClosed;
  std::unique_ptr<FileStream> stream_;  // null: nobody asked for it
  std::int64_t modificationTime_ = 0;   // 0: not known
};

}  // namespace

CFTFileImpl* CreateFTFileImpl() noexcept { return new CPosixFTFileImpl; }

}  // namespace Quorvex::platform
