// A file under a random name that is renamed in the end.
#include "platform/pending_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <utility>

#include "platform/path.h"
#include "platform/posix/file_name.h"
#include "platform/text.h"

namespace Quorvex::platform {
namespace {

constexpr int kMostTries = 100;  // random names that exist already
constexpr mode_t kEverybody = 0666;
constexpr mode_t kPermissions = 0777;

QVERRORCODE_TAG CodeOf(int error) {
  switch (error) {
    case ENOENT:
    case ENOTDIR:
      return QVERR_PATH_NOT_FOUND;
    case EACCES:
    case EPERM:
    case EROFS:
      return QVERR_ACCESS_DENIED;
    default:
      return QVERR_FILE_CREATE_FAILED;
  }
}

// The file that a name leads to, through links; the name itself when there is none.
std::string Followed(const std::string& name) {
  const std::unique_ptr<char, void (*)(void*)> resolved(::realpath(name.c_str(), nullptr),
                                                        std::free);
  return resolved != nullptr ? std::string(resolved.get()) : name;
}

std::string RandomName(const std::string& target) {
  std::random_device random;
  char name[40];
  std::snprintf(name, sizeof name, ".%08x%08x.part", random(), random());
  return target.substr(0, target.find_last_of('/') + 1) + name;
}

// Gives a file a name that no other has. The second way is for file systems that do not know the
// first, the third, which somebody may still come before, for those that know no links either.
bool RenameToNew(const char* from, const char* to) {
  if (::renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return true;
  if (errno != EINVAL && errno != ENOSYS) return false;
  if (::link(from, to) == 0) return ::unlink(from) == 0;
  if (errno == EEXIST || ::access(to, F_OK) == 0) return false;
  return ::rename(from, to) == 0;
}

}  // namespace

PendingFile::~PendingFile() {
  std::string name;
  if (!name_.empty() && SystemFileName(name_.c_str(), name)) ::unlink(name.c_str());
}

QVERRORCODE_TAG PendingFile::Create(const wchar_t* path, bool replace) {
  std::wstring full;  // the working directory may be another in the end
  std::string target;
  if (!ResolvePath(path, full) || !SystemFileName(full.c_str(), target)) {
    return QVERR_FILE_CREATE_FAILED;
  }
  target = Followed(target);
  struct stat status {};
  const bool exists = ::stat(target.c_str(), &status) == 0;
  if (exists && (!replace || !S_ISREG(status.st_mode))) return QVERR_FILE_CREATE_FAILED;
  if (exists && ::access(target.c_str(), W_OK) != 0) return QVERR_ACCESS_DENIED;
  int descriptor = -1;
  std::string name;
  for (int tries = 0; descriptor < 0; ++tries) {
    name = RandomName(target);
    descriptor = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kEverybody);
    if (descriptor < 0 && (errno != EEXIST || tries == kMostTries)) return CodeOf(errno);
  }
  // As far as the owner may.
  if (exists && ::fchmod(descriptor, status.st_mode & kPermissions) != 0) errno = 0;
  ::close(descriptor);
  name_ = Widen(name);
  target_ = Widen(target);
  replace_ = replace;
  return QVERR_OK;
}

QVERRORCODE_TAG PendingFile::Publish() noexcept try {
  std::string name;
  std::string target;
  if (!SystemFileName(name_.c_str(), name) || !SystemFileName(target_.c_str(), target)) {
    return QVERR_FILE_CREATE_FAILED;
  }
  const bool isRenamed = replace_ ? ::rename(name.c_str(), target.c_str()) == 0
                                  : RenameToNew(name.c_str(), target.c_str());
  if (!isRenamed) return QVERR_FILE_CREATE_FAILED;
  name_.clear();
  return QVERR_OK;
} catch (...) {
  return QVERR_CREATE_FAILED;
}

}  // namespace Quorvex::platform
