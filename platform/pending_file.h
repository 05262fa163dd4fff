// PendingFile: a file that appears under its name whole or not at all.
#pragma once

#include <memory>
#include <string>

#include <MediaAccessor/result_code.h>

namespace Quorvex::platform {

/// The place of a new file until it is finished: an empty file of a name of its own, in the
/// directory that the finished one will be in. Nothing is forced to the disk, so a power failure
/// may still take what was written last. One thread at a time.
class PendingFile {
 public:
  PendingFile() noexcept;
  /// Deletes the file unless it was published.
  ~PendingFile();
  PendingFile(const PendingFile&) = delete;
  PendingFile& operator=(const PendingFile&) = delete;

  /// Makes the empty file. May throw std::bad_alloc. Once an object.
  /// @param path     where it will appear; a link there is followed.
  /// @param replace  whether a file there is replaced in the end.
  /// @return QVERR_OK; QVERR_FILE_CREATE_FAILED when `path` exists and is not to be replaced, is
  ///         not a regular file or a link to nothing, or when no file can be made beside it;
  ///         QVERR_PATH_NOT_FOUND when its directory does not exist; QVERR_ACCESS_DENIED when the
  ///         directory or the file to be replaced refuses to be written.
  QVERRORCODE_TAG Create(const wchar_t* path, bool replace);

  /// The empty file's own name, for whoever fills it and closes it. Create was successful.
  const std::wstring& Name() const noexcept;

  /// Gives the finished file its name. On Linux it then has the group and the permissions of the
  /// file that it replaces, as far as they can be given; nobody gets more than they had.
  /// @return QVERR_OK; QVERR_FILE_CREATE_FAILED, also when somebody else was faster and nothing is
  ///         to be replaced. The destructor then deletes the file.
  QVERRORCODE_TAG Publish() noexcept;

 private:
  struct State;
  std::unique_ptr<State> state_;  // null: there is no file
};

}  // namespace Quorvex::platform
