// CWin32FTFileImpl: the file over a handle. The system's calls tell a failure by their result, by
// the last error, or by both: each operation clears the last error first and looks at it
// afterwards.
#include "platform/ft_file_impl.h"

#include <MediaAccessor/result_code.h>

#include <ctime>

#include "platform/file_stream.h"
#include "platform/win32/error_mode_guard.h"
#include "platform/win32/windows_api.h"

namespace Quorvex::platform {
namespace {

// What surrounds an operation: no message box, and no error left over from before.
class SystemCall {
 public:
  SystemCall() noexcept { ::SetLastError(ERROR_SUCCESS); }
  static DWORD Error() noexcept { return ::GetLastError(); }

 private:
  ErrorModeGuard guard_;
};

QVERRORCODE_TAG MissingCode(DWORD error, QVERRORCODE_TAG other) {
  if (error == ERROR_FILE_NOT_FOUND) return QVERR_FILE_NOT_FOUND;
  return error == ERROR_PATH_NOT_FOUND ? QVERR_PATH_NOT_FOUND : other;
}

class CWin32FTFileImpl final : public CFTFileImpl {
 public:
  CWin32FTFileImpl() = default;
  ~CWin32FTFileImpl() override { CloseAll(); }

  bool IsOpen() const noexcept override { return handle_ != INVALID_HANDLE_VALUE; }

  void Create(const wchar_t* name) override {
    CloseAll();
    const SystemCall call;
    if (OpenHandle(name, GENERIC_READ | GENERIC_WRITE, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL))
      return;
    throw call.Error() == ERROR_ACCESS_DENIED ? QVERR_ACCESS_DENIED : QVERR_FILE_CREATE_FAILED;
  }

  void Open(const wchar_t* name, bool write) override {
    CloseAll();
    const SystemCall call;
    if (OpenHandle(name, write ? GENERIC_READ | GENERIC_WRITE : GENERIC_READ, OPEN_EXISTING, 0)) {
      return;
    }
    if (write && call.Error() == ERROR_ACCESS_DENIED) throw QVERR_ACCESS_DENIED;
    throw MissingCode(call.Error(), QVERR_FILE_OPEN_FAILED);
  }

  void Close() override {
    if (!CloseAll()) throw QVERR_FILE_WRITE_FAILED;
  }

  void Delete(const wchar_t* name) override {
    const SystemCall call;
    if (::DeleteFileW(name) != 0 && call.Error() == ERROR_SUCCESS) return;
    throw MissingCode(call.Error(), QVERR_FILE_WRITE_FAILED);
  }

  void Seek(std::int64_t offset) override { Move(offset, FILE_BEGIN); }

  std::int64_t Tell() override { return Move(0, FILE_CURRENT); }

  std::int64_t GetSize() override {
    const BY_HANDLE_FILE_INFORMATION information = Information();
    return static_cast<std::int64_t>(information.nFileSizeHigh) << 32 | information.nFileSizeLow;
  }

  std::int64_t GetModificationTime() override {
    if (modificationTime_ != 0) return modificationTime_;
    const SystemCall call;
    const BY_HANDLE_FILE_INFORMATION information = Information();
    SYSTEMTIME time{};
    if (::FileTimeToSystemTime(&information.ftLastWriteTime, &time) == 0) throw QVERR_FILE_IO;
    std::tm fields{};
    fields.tm_year = time.wYear - 1900;
    fields.tm_mon = time.wMonth - 1;
    fields.tm_mday = time.wDay;
    fields.tm_hour = time.wHour;
    fields.tm_min = time.wMinute;
    fields.tm_sec = time.wSecond;
    modificationTime_ = std::mktime(&fields);
    return modificationTime_;
  }

  std::istream* GetStream() override {
    if (stream_ == nullptr && IsOpen()) stream_ = FileStream::Make(*this);
    return stream_.get();
  }

  void Write(const std::uint8_t* data, std::uint32_t count) override {
    modificationTime_ = 0;
    const SystemCall call;
    DWORD written = 0;
    if (::WriteFile(handle_, data, count, &written, nullptr) == 0 || written != count ||
        call.Error() != ERROR_SUCCESS) {
      throw QVERR_FILE_WRITE_FAILED;
    }
  }

  void Read(std::uint8_t* data, std::uint32_t count) override {
    const SystemCall call;
    DWORD got = 0;
    if (::ReadFile(handle_, data, count, &got, nullptr) == 0 || got != count ||
        call.Error() != ERROR_SUCCESS) {
      throw QVERR_FILE_IO;
    }
  }

 private:
  bool OpenHandle(const wchar_t* name, DWORD access, DWORD disposition, DWORD attributes) {
    handle_ = ::CreateFileW(name, access, FILE_SHARE_READ, nullptr, disposition,
                            FILE_FLAG_RANDOM_ACCESS | attributes, nullptr);
    if (IsOpen() && ::GetFileType(handle_) != FILE_TYPE_DISK) {
      CloseAll();
      ::SetLastError(ERROR_INVALID_HANDLE);
    }
    return IsOpen();
  }

  bool CloseAll() noexcept {
    const SystemCall call;
    stream_.reset();
    const bool closed = !IsOpen() || ::CloseHandle(handle_) != 0;
    handle_ = INVALID_HANDLE_VALUE;
    modificationTime_ = 0;
    return closed;
  }

  std::int64_t Move(std::int64_t offset, DWORD from) {
    const SystemCall call;
    LONG high = static_cast<LONG>(offset >> 32);
    const DWORD low = ::SetFilePointer(handle_, static_cast<LONG>(offset), &high, from);
    if (call.Error() != ERROR_SUCCESS) throw QVERR_FILE_IO;
    return static_cast<std::int64_t>(high) << 32 | low;
  }

  BY_HANDLE_FILE_INFORMATION Information() const {
    BY_HANDLE_FILE_INFORMATION information{};
    if (::GetFileInformationByHandle(handle_, &information) == 0) throw QVERR_FILE_IO;
    return information;
  }

  HANDLE handle_ = INVALID_HANDLE_VALUE;
  std::unique_ptr<FileStream> stream_;  // null: nobody asked for it
  std::int64_t modificationTime_ = 0;   // 0: not known
};

}  // namespace

CFTFileImpl* CreateFTFileImpl() noexcept { return new CWin32FTFileImpl; }

}  // namespace Quorvex::platform
