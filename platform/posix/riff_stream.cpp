// A RIFF file over pread and pwrite, with a buffer: a page for reading headers, more for writing
// small blocks. What is as large as the buffer goes past it.
#include "platform/riff_stream.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <string>
#include <utility>

#include "platform/input_file.h"
#include "platform/posix/file_name.h"

namespace Quorvex::platform {
namespace {

constexpr std::size_t kReadBuffer = 4096;
constexpr std::size_t kWriteBuffer = 65'536;
constexpr std::size_t kChunkHeader = 8;  // id and size
constexpr std::size_t kSizeField = 4;
constexpr std::uint64_t kLargestSize = std::numeric_limits<std::uint32_t>::max();

bool IsContainer(std::uint32_t id) { return id == kRiffId || id == kListId; }

std::uint64_t PaddedEnd(std::uint64_t offset, std::uint64_t size) {
  return offset + size + (size & 1);
}

void PutLittleEndian32(std::uint32_t value, unsigned char* bytes) {
  for (int i = 0; i < 4; ++i) bytes[i] = static_cast<unsigned char>(value >> (8 * i));
}

std::uint32_t GetLittleEndian32(const unsigned char* bytes) {
  std::uint32_t value = 0;
  for (int i = 3; i >= 0; --i) value = value << 8 | bytes[i];
  return value;
}

}  // namespace

struct RiffStream::State {
  ~State() {
    if (output >= 0) ::close(output);
  }

  bool IsWriting() const { return output >= 0; }
  bool WriteAt(std::uint64_t offset, const unsigned char* data, std::size_t count) const;
  bool Flush();

  InputFile input;
  int output = -1;  // a descriptor; -1 while reading
  std::uint64_t position = 0;
  // Reading: what the file holds from bufferOffset on. Writing: what is still to be written there,
  // up to the position.
  std::unique_ptr<unsigned char[]> buffer;
  std::uint64_t bufferOffset = 0;
  std::size_t bufferCount = 0;
};

bool RiffStream::State::WriteAt(std::uint64_t offset, const unsigned char* data,
                                std::size_t count) const {
  while (count > 0) {
    const ssize_t written = ::pwrite(output, data, count, static_cast<off_t>(offset));
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    data += written;
    offset += static_cast<std::uint64_t>(written);
    count -= static_cast<std::size_t>(written);
  }
  return true;
}

bool RiffStream::State::Flush() {
  const std::size_t count = std::exchange(bufferCount, 0);
  const std::uint64_t offset = std::exchange(bufferOffset, position);
  return WriteAt(offset, buffer.get(), count);
}

RiffStream::RiffStream() noexcept = default;
RiffStream::~RiffStream() { Close(); }

bool RiffStream::Open(const wchar_t* path) {
  Close();
  auto state = std::make_unique<State>();
  state->buffer = std::make_unique_for_overwrite<unsigned char[]>(kReadBuffer);
  if (!state->input.Open(path)) return false;
  state_ = std::move(state);
  return true;
}

bool RiffStream::Create(const wchar_t* path) {
  Close();
  auto state = std::make_unique<State>();
  state->buffer = std::make_unique_for_overwrite<unsigned char[]>(kWriteBuffer);
  std::string name;
  if (!SystemFileName(path, name)) return false;
  // O_NONBLOCK: opening a pipe that nobody reads from must not wait.
  constexpr int kFlags = O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NONBLOCK;
  constexpr mode_t kEverybody = 0666;  // less what the process masks
  state->output = ::open(name.c_str(), kFlags, kEverybody);
  struct stat status {};
  if (state->output < 0 || ::fstat(state->output, &status) != 0 || !S_ISREG(status.st_mode)) {
    return false;
  }
  state_ = std::move(state);
  return true;
}

bool RiffStream::Close() noexcept {
  if (state_ == nullptr) return true;
  const auto state = std::exchange(state_, nullptr);
  if (!state->IsWriting()) return true;
  const bool isFlushed = state->Flush();
  return ::close(std::exchange(state->output, -1)) == 0 && isFlushed;
}

bool RiffStream::Descend(RiffChunk& chunk, const RiffChunk* parent) noexcept {
  const std::uint64_t start = state_->position;
  if (parent != nullptr && start + kChunkHeader > parent->offset + std::uint64_t{parent->size}) {
    return false;
  }
  unsigned char bytes[kChunkHeader];
  unsigned char type[kSizeField] = {};
  std::size_t got = 0;
  bool isWhole = Read(bytes, sizeof bytes, got) && got == sizeof bytes;
  if (isWhole && IsContainer(GetLittleEndian32(bytes))) {
    isWhole = Read(type, sizeof type, got) && got == sizeof type;
  }
  if (!isWhole) {
    state_->position = start;
    return false;
  }
  chunk.id = GetLittleEndian32(bytes);
  chunk.size = GetLittleEndian32(bytes + 4);
  chunk.type = GetLittleEndian32(type);
  chunk.offset = start + kChunkHeader;
  return true;
}

bool RiffStream::Ascend(const RiffChunk& chunk) noexcept {
  if (!state_->IsWriting()) {
    state_->position = std::min(PaddedEnd(chunk.offset, chunk.size), state_->input.Size());
    return true;
  }
  const std::uint64_t size = state_->position - chunk.offset;
  constexpr unsigned char kPad = 0;
  if (size > kLargestSize || ((size & 1) != 0 && !Write(&kPad, 1))) return false;
  unsigned char bytes[kSizeField];
  PutLittleEndian32(static_cast<std::uint32_t>(size), bytes);
  return state_->Flush() && state_->WriteAt(chunk.offset - kSizeField, bytes, sizeof bytes);
}

bool RiffStream::CreateChunk(RiffChunk& chunk) noexcept {
  unsigned char bytes[kChunkHeader + kSizeField] = {};
  PutLittleEndian32(chunk.id, bytes);
  PutLittleEndian32(chunk.type, bytes + kChunkHeader);
  chunk.offset = state_->position + kChunkHeader;
  return Write(bytes, IsContainer(chunk.id) ? sizeof bytes : kChunkHeader);
}

bool RiffStream::Read(void* buffer, std::size_t count, std::size_t& got) noexcept {
  State& state = *state_;
  if (count >= kReadBuffer) {
    const bool isRead = state.input.ReadAt(state.position, buffer, count, got);
    state.position += got;
    return isRead;
  }
  const auto held = [&state] {
    const std::uint64_t before = state.position - state.bufferOffset;
    return state.position >= state.bufferOffset && before < state.bufferCount
               ? state.bufferCount - static_cast<std::size_t>(before)
               : 0;
  };
  bool isRead = true;
  if (held() < count) {
    state.bufferOffset = state.position;
    isRead = state.input.ReadAt(state.position, state.buffer.get(), kReadBuffer, state.bufferCount);
  }
  got = std::min(held(), count);
  std::memcpy(buffer, state.buffer.get() + (state.position - state.bufferOffset), got);
  state.position += got;
  return isRead || got == count;
}

bool RiffStream::Write(const void* data, std::size_t count) noexcept {
  State& state = *state_;
  if (count == 0) return true;
  // The RIFF chunk's own size has to hold everything behind it.
  if (count > kLargestSize || state.position + count > kLargestSize + kChunkHeader) return false;
  const auto* const bytes = static_cast<const unsigned char*>(data);
  if (state.bufferCount + count > kWriteBuffer && !state.Flush()) return false;
  if (count >= kWriteBuffer) {
    if (!state.WriteAt(state.position, bytes, count)) return false;
    state.bufferOffset = state.position + count;
  } else {
    std::memcpy(state.buffer.get() + state.bufferCount, bytes, count);
    state.bufferCount += count;
  }
  state.position += count;
  return true;
}

bool RiffStream::Seek(std::uint64_t offset) noexcept {
  state_->position = offset;
  return true;
}

std::uint64_t RiffStream::Position() const noexcept { return state_->position; }

}  // namespace Quorvex::platform
