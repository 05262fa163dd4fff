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

constexpr int kMostTries = 100;      // random names that exist already
constexpr mode_t kEverybody = 0666;  // less what the process masks
constexpr mode_t kOwner = 0600;      // until the file is like the one that it replaces
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

// Gives a file a name that no other has. The second way is for file systems and sandboxes that do
// not know the first, the third, which somebody may still come before, for those that know no
// links.
bool RenameToNew(const char* from, const char* to) {
  if (::renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return true;
  if (errno == EEXIST) return false;
  if (::link(from, to) == 0) {
    ::unlink(from);
    return true;
  }
  if (errno == EEXIST || ::access(to, F_OK) == 0) return false;
  return ::rename(from, to) == 0;
}

}  // namespace

// Everything that needs memory is made before there is a file: deleting it needs none.
struct PendingFile::State {
  std::wstring name;
  std::string file;    // the same, as the system takes it
  std::string target;  // where it will appear
  bool replace = false;
  bool exists = false;  // something is there that will be replaced
  mode_t mode = 0;      // of that
  gid_t group = 0;
};

namespace {

// Makes a file like the one that it replaces. A group that it cannot be given to is no reason to
// let another one in.
void TakeOver(const char* file, gid_t group, mode_t mode) {
  if (::chown(file, static_cast<uid_t>(-1), group) != 0) {
    constexpr mode_t kGroup = 070;
    constexpr mode_t kOthers = 07;
    mode = (mode & ~kGroup) | (mode & kGroup & (mode & kOthers) << 3);
  }
  [[maybe_unused]] const bool isChanged = ::chmod(file, mode) == 0;
}

}  // namespace

PendingFile::PendingFile() noexcept = default;

PendingFile::~PendingFile() {
  if (state_ != nullptr) ::unlink(state_->file.c_str());
}

const std::wstring& PendingFile::Name() const noexcept { return state_->name; }

QVERRORCODE_TAG PendingFile::Create(const wchar_t* path, bool replace) {
  auto state = std::make_unique<State>();
  std::wstring full;  // the working directory may be another in the end
  if (!ResolvePath(path, full) || !SystemFileName(full.c_str(), state->target)) {
    return QVERR_FILE_CREATE_FAILED;
  }
  state->target = Followed(state->target);
  state->replace = replace;
  struct stat status {};
  if (::lstat(state->target.c_str(), &status) == 0) {
    // A link that is still there leads to nothing, and is no file that could be replaced.
    if (!replace || !S_ISREG(status.st_mode)) return QVERR_FILE_CREATE_FAILED;
    if (::faccessat(AT_FDCWD, state->target.c_str(), W_OK, AT_EACCESS) != 0) {
      return QVERR_ACCESS_DENIED;
    }
    state->exists = true;
    state->mode = status.st_mode & kPermissions;
    state->group = status.st_gid;
  }
  for (int tries = 0;; ++tries) {
    state->file = RandomName(state->target);
    state->name = Widen(state->file);
    const int descriptor = ::open(state->file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC,
                                  state->exists ? kOwner : kEverybody);
    if (descriptor >= 0) {
      ::close(descriptor);
      state_ = std::move(state);
      return QVERR_OK;
    }
    if (errno != EEXIST || tries == kMostTries) return CodeOf(errno);
  }
}

QVERRORCODE_TAG PendingFile::Publish() noexcept {
  const char* const file = state_->file.c_str();
  const char* const target = state_->target.c_str();
  if (state_->exists) TakeOver(file, state_->group, state_->mode);
  const bool isRenamed = state_->replace ? ::rename(file, target) == 0 : RenameToNew(file, target);
  if (!isRenamed) return QVERR_FILE_CREATE_FAILED;
  state_ = nullptr;
  return QVERR_OK;
}

}  // namespace Quorvex::platform
