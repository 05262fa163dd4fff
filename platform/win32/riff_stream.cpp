// RiffStream over mmio, the system's multimedia I/O. mmio is given an I/O procedure of our own, and
// no name: with a name it takes at most 128 characters and looks for '+' in them, and its own
// procedure opens pipes and devices, seeks files beyond 2 GiB to negative offsets and loses failed
// writes when a chunk is ended.
//
// mmio computes in 32 bits. Positions and the ends of chunks are kept here in 64; mmio is moved
// only to where the file has bytes, and only reads headers one at a time: it is never asked to
// search.
#include "platform/riff_stream.h"

#include <algorithm>
#include <cstring>

#include "platform/win32/error_mode_guard.h"
#include "platform/win32/system_library.h"
#include "platform/win32/windows_api.h"

#include <mmsystem.h>

namespace Quorvex::platform {
namespace {

constexpr LONG kLargestOffset = 0x7FFFFFFF;
constexpr std::uint32_t kChunkHeader = 8;  // id and size
constexpr std::uint32_t kTypeBytes = 4;    // of a RIFF or LIST chunk
constexpr DWORD kReading = MMIO_READ | MMIO_DENYWRITE;
constexpr DWORD kCreating = MMIO_CREATE | MMIO_WRITE | MMIO_EXCLUSIVE | MMIO_DENYWRITE;
static_assert(kReading == 0x20 && kCreating == 0x1031);

bool HasType(std::uint32_t id) { return id == kRiffId || id == kListId; }

struct Multimedia {
  bool Load() noexcept {
    const HMODULE library = LoadSystemLibrary(L"winmm.dll");
    return FindFunction(library, "mmioOpenW", open) && FindFunction(library, "mmioClose", close) &&
           FindFunction(library, "mmioDescend", descend) &&
           FindFunction(library, "mmioAscend", ascend) &&
           FindFunction(library, "mmioCreateChunk", createChunk) &&
           FindFunction(library, "mmioRead", read) && FindFunction(library, "mmioWrite", write) &&
           FindFunction(library, "mmioSeek", seek);
  }

  decltype(::mmioOpenW)* open = nullptr;
  decltype(::mmioClose)* close = nullptr;
  decltype(::mmioDescend)* descend = nullptr;
  decltype(::mmioAscend)* ascend = nullptr;
  decltype(::mmioCreateChunk)* createChunk = nullptr;
  decltype(::mmioRead)* read = nullptr;
  decltype(::mmioWrite)* write = nullptr;
  decltype(::mmioSeek)* seek = nullptr;
};

// A regular file without a position of its own, as mmio's I/O procedure works on it.
class RegularFile {
 public:
  RegularFile() = default;
  ~RegularFile() { Close(); }
  RegularFile(const RegularFile&) = delete;
  RegularFile& operator=(const RegularFile&) = delete;

  bool Open(const wchar_t* path, bool write) noexcept {
    const ErrorModeGuard guard;
    // No client of a pipe that somebody laid out gets to act for its user
    // (SECURITY_IDENTIFICATION).
    handle_ = ::CreateFileW(path, write ? GENERIC_WRITE : GENERIC_READ, write ? 0 : FILE_SHARE_READ,
                            nullptr, write ? CREATE_ALWAYS : OPEN_EXISTING,
                            FILE_ATTRIBUTE_NORMAL | SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION,
                            nullptr);
    return handle_ != INVALID_HANDLE_VALUE && ::GetFileType(handle_) == FILE_TYPE_DISK;
  }

  // False when something written is lost.
  bool Close() noexcept {
    const ErrorModeGuard guard;
    if (handle_ != INVALID_HANDLE_VALUE && ::CloseHandle(handle_) == 0) lostWrite_ = true;
    handle_ = INVALID_HANDLE_VALUE;
    return !lostWrite_;
  }

  // -1 on failure.
  LONGLONG Size() const noexcept {
    LARGE_INTEGER size{};
    return ::GetFileSizeEx(handle_, &size) != 0 ? size.QuadPart : -1;
  }

  // The bytes read; -1 on failure.
  LONG ReadAt(LONG offset, void* buffer, LONG count) noexcept {
    const ErrorModeGuard guard;
    OVERLAPPED at{};
    at.Offset = static_cast<DWORD>(offset);
    const auto reachable = static_cast<DWORD>(std::min(count, kLargestOffset - offset));
    DWORD got = 0;
    if (::ReadFile(handle_, buffer, reachable, &got, &at) == 0) {
      return ::GetLastError() == ERROR_HANDLE_EOF ? 0 : -1;
    }
    return static_cast<LONG>(got);
  }

  // The bytes written; -1 on failure.
  LONG WriteAt(LONG offset, const void* data, LONG count) noexcept {
    const ErrorModeGuard guard;
    OVERLAPPED at{};
    at.Offset = static_cast<DWORD>(offset);
    DWORD written = 0;
    if (count > kLargestOffset - offset ||
        ::WriteFile(handle_, data, static_cast<DWORD>(count), &written, &at) == 0 ||
        written != static_cast<DWORD>(count)) {
      lostWrite_ = true;
      return -1;
    }
    return count;
  }

  bool HasLostWrite() const noexcept { return lostWrite_; }

 private:
  HANDLE handle_ = INVALID_HANDLE_VALUE;
  bool lostWrite_ = false;
};

LONG SeekOrigin(const RegularFile& file, const MMIOINFO& info, int origin) {
  if (origin == SEEK_SET) return 0;
  if (origin == SEEK_CUR) return info.lDiskOffset;
  return static_cast<LONG>(std::min<LONGLONG>(file.Size(), kLargestOffset));  // -1: a failure
}

// What mmio calls to reach the file, whose address it keeps in the words for such use.
LRESULT CALLBACK AccessFile(LPSTR address, UINT message, LPARAM first, LPARAM second) {
  MMIOINFO& info = *reinterpret_cast<MMIOINFO*>(address);
  RegularFile* file = nullptr;
  static_assert(sizeof file <= sizeof info.adwInfo);
  std::memcpy(&file, info.adwInfo, sizeof file);
  const auto count = static_cast<LONG>(second);
  LONG done = -1;
  switch (message) {
    case MMIOM_READ:
      done = file->ReadAt(info.lDiskOffset, reinterpret_cast<void*>(first), count);
      break;
    case MMIOM_WRITE:
    case MMIOM_WRITEFLUSH:
      done = file->WriteAt(info.lDiskOffset, reinterpret_cast<const void*>(first), count);
      break;
    case MMIOM_SEEK: {
      const LONGLONG origin = SeekOrigin(*file, info, static_cast<int>(second));
      const LONGLONG target = origin + first;
      if (origin < 0 || target < 0 || target > kLargestOffset) return -1;
      info.lDiskOffset = static_cast<LONG>(target);
      return info.lDiskOffset;
    }
    default:
      return 0;  // the file is opened and closed by its owner
  }
  if (done > 0) info.lDiskOffset += done;
  return done;
}

}  // namespace

struct RiffStream::State {
  State(const Multimedia& functions, bool write) : mmio(functions), writing(write) {}
  ~State() { CloseStream(); }
  State(const State&) = delete;
  State& operator=(const State&) = delete;

  static std::unique_ptr<State> Open(const wchar_t* path, bool write) {
    const Multimedia* const functions = SystemFunctions<Multimedia>();
    if (functions == nullptr) return nullptr;
    auto state = std::make_unique<State>(*functions, write);
    return state->file.Open(path, write) && state->OpenStream() ? std::move(state) : nullptr;
  }

  bool OpenStream() noexcept {
    const LONGLONG size = file.Size();
    if (size < 0) return false;
    end = static_cast<std::uint64_t>(std::min<LONGLONG>(size, kLargestOffset));
    MMIOINFO info{};
    info.pIOProc = &AccessFile;
    const RegularFile* const address = &file;
    std::memcpy(info.adwInfo, &address, sizeof address);
    stream = mmio.open(nullptr, &info, writing ? kCreating : kReading);
    return stream != nullptr;
  }

  void CloseStream() noexcept {
    if (stream != nullptr) mmio.close(stream, 0);
    stream = nullptr;
  }

  // Moves mmio to the position, which is within its offsets.
  bool MoveStream() noexcept {
    return mmio.seek(stream, static_cast<LONG>(position), SEEK_SET) == static_cast<LONG>(position);
  }

  bool HasRoom(std::uint64_t count) const noexcept {
    return writing && count <= std::uint64_t{kLargestOffset} - position;
  }

  const Multimedia& mmio;
  RegularFile file;
  HMMIO stream = nullptr;
  const bool writing;
  std::uint64_t end = 0;  // reading: of what can be reached
  std::uint64_t position = 0;
};

RiffStream::RiffStream() noexcept = default;
RiffStream::~RiffStream() { Close(); }

bool RiffStream::Open(const wchar_t* path) {
  Close();
  state_ = State::Open(path, false);
  return IsOpen();
}

bool RiffStream::Create(const wchar_t* path) {
  Close();
  state_ = State::Open(path, true);
  return IsOpen();
}

bool RiffStream::Close() noexcept {
  if (!IsOpen()) return true;
  state_->CloseStream();
  const bool closed = state_->file.Close();
  state_.reset();
  return closed;
}

bool RiffStream::Descend(RiffChunk& chunk, const RiffChunk* parent) noexcept {
  if (!IsOpen() || state_->writing) return false;
  State& state = *state_;
  std::uint64_t end = state.end;
  if (parent != nullptr) end = std::min(end, parent->offset + parent->size);
  if (state.position > end || end - state.position < kChunkHeader) return false;
  MMCKINFO found{};
  if (!state.MoveStream() ||
      state.mmio.descend(state.stream, &found, nullptr, 0) != MMSYSERR_NOERROR) {
    return false;
  }
  const std::uint64_t offset = state.position + kChunkHeader;
  const std::uint32_t typeBytes = HasType(found.ckid) ? kTypeBytes : 0;
  if (typeBytes > state.end - offset) return false;
  state.position = offset + typeBytes;
  chunk = {.id = found.ckid,
           .size = found.cksize,
           .type = typeBytes > 0 ? found.fccType : 0,
           .offset = offset};
  return true;
}

bool RiffStream::Ascend(const RiffChunk& chunk) noexcept {
  if (!IsOpen()) return false;
  State& state = *state_;
  if (!state.writing) {
    const std::uint64_t size = chunk.size;
    state.position = std::min(state.end, chunk.offset + size + size % 2);
    return true;
  }
  if (chunk.offset > state.position || !state.MoveStream()) return false;
  const std::uint64_t size = state.position - chunk.offset;
  if (!state.HasRoom(size % 2)) return false;
  MMCKINFO ended{};
  ended.ckid = chunk.id;
  ended.dwDataOffset = static_cast<DWORD>(chunk.offset);
  ended.dwFlags = MMIO_DIRTY;
  if (state.mmio.ascend(state.stream, &ended, 0) != MMSYSERR_NOERROR) return false;
  state.position += size % 2;
  return !state.file.HasLostWrite();
}

bool RiffStream::CreateChunk(RiffChunk& chunk) noexcept {
  if (!IsOpen()) return false;
  State& state = *state_;
  const std::uint32_t header = kChunkHeader + (HasType(chunk.id) ? kTypeBytes : 0);
  if (!state.HasRoom(header) || !state.MoveStream()) return false;
  MMCKINFO begun{};
  begun.ckid = chunk.id;
  begun.fccType = chunk.type;
  const UINT flags = chunk.id == kRiffId   ? MMIO_CREATERIFF
                     : chunk.id == kListId ? MMIO_CREATELIST
                                           : 0;
  if (state.mmio.createChunk(state.stream, &begun, flags) != MMSYSERR_NOERROR) return false;
  chunk.offset = state.position + kChunkHeader;
  state.position += header;
  return !state.file.HasLostWrite();
}

bool RiffStream::Read(void* buffer, std::size_t count, std::size_t& got) noexcept {
  got = 0;
  if (!IsOpen() || state_->writing) return false;
  State& state = *state_;
  if (state.position >= state.end) return true;
  count = static_cast<std::size_t>(std::min<std::uint64_t>(count, state.end - state.position));
  if (!state.MoveStream()) return false;
  while (got < count) {
    const LONG read = state.mmio.read(state.stream, static_cast<char*>(buffer) + got,
                                      static_cast<LONG>(count - got));
    if (read < 0) return false;
    if (read == 0) return true;
    got += static_cast<std::size_t>(read);
    state.position += static_cast<std::uint64_t>(read);
  }
  return true;
}

bool RiffStream::Write(const void* data, std::size_t count) noexcept {
  if (!IsOpen() || !state_->HasRoom(count) || !state_->MoveStream()) return false;
  const auto size = static_cast<LONG>(count);
  if (state_->mmio.write(state_->stream, static_cast<const char*>(data), size) != size) {
    return false;
  }
  state_->position += count;
  return true;
}

bool RiffStream::Seek(std::uint64_t offset) noexcept {
  if (!IsOpen() || state_->writing) return false;
  state_->position = offset;
  return true;
}

std::uint64_t RiffStream::Position() const noexcept { return IsOpen() ? state_->position : 0; }

}  // namespace Quorvex::platform
