// The engine's reading side. 16-bit PCM is handed out as it is read; everything else goes through
// the compression manager:
//
//     file --128 KiB--> buffer --stage 1--> [PCM --stage 2-->] samples
//
// Bytes that a stage does not use are read again with the next block.
#include "formats/wav/wav_media_file.h"

#include <algorithm>
#include <bit>
#include <chrono>
#include <thread>

#include "formats/wav/wav_header.h"
#include "platform/path.h"
#include "support/no_throw.h"

namespace Quorvex {
namespace {

constexpr std::size_t kBufferSize = 131'072;  // bytes
constexpr std::size_t kCacheLine = 64;        // bytes
constexpr std::chrono::milliseconds kBusyPoll{50};

static_assert(std::endian::native == std::endian::little, "16-bit PCM is delivered as read");

}  // namespace

QVERRORCODE_TAG CWAVMediaFileImpl::Open(const wchar_t* name, int mode) {
  if (IsOpen()) return QVERR_ALREADY_OPEN;
  if (*name == L'\0') return QVERR_BAD_FILE_NAME;
  if (mode != kModeRead && mode != kModeWrite) return QVERR_INVALID_ARGUMENT;
  const QVERRORCODE_TAG result = NoThrow([&] {
    if (!buffer_.Resize(kBufferSize + kCacheLine)) return QVERR_CREATE_FAILED;
    source_ = {buffer_.Data(), kBufferSize};
    return mode == kModeRead ? OpenForReading(name) : OpenForWriting(name);
  });
  if (result == QVERR_OK) {
    mode_ = mode;
  } else {
    Abandon();
  }
  return result;
}

QVERRORCODE_TAG CWAVMediaFileImpl::OpenForReading(const wchar_t* name) {
  if (!stream_.Open(name)) {
    return platform::Exists(name) ? QVERR_FILE_OPEN_FAILED : QVERR_FILE_NOT_FOUND;
  }
  WAVHeader header;
  const QVERRORCODE_TAG result = ReadWAVHeader(stream_, header);
  if (result != QVERR_OK) return result;
  format_ = header.format;
  dataOffset_ = header.dataOffset;
  dataSize_ = header.dataSize;
  if (format_.channels == 0 || format_.samplesPerSecond == 0) return QVERR_BAD_FORMAT;
  facts_ = {.channels = format_.channels,
            .samplingFrequency = format_.samplesPerSecond,
            .milliseconds = WAVMilliseconds(header)};
  // The system copies faster when both ends lie alike within their cache lines.
  const auto address = reinterpret_cast<std::uintptr_t>(buffer_.Data());
  source_ = {buffer_.Data() + (dataOffset_ - address) % kCacheLine, kBufferSize};
  if (!IsPCM16(format_)) {
    const QVERRORCODE_TAG opened = conversion_.Open(format_, source_);
    if (opened != QVERR_OK) return opened;
    facts_.channels = conversion_.Target().channels;
    facts_.samplingFrequency = conversion_.Target().samplesPerSecond;
  }
  if (!HasLastByte()) return QVERR_FILE_IO;
  name_ = name;
  return QVERR_OK;
}

// A file that was cut off is refused here, not when somebody reads so far.
bool CWAVMediaFileImpl::HasLastByte() noexcept {
  if (dataSize_ == 0) return true;
  unsigned char byte = 0;
  std::size_t got = 0;
  return stream_.Seek(dataOffset_ + dataSize_ - 1) && stream_.Read(&byte, 1, got) && got == 1;
}

QVERRORCODE_TAG CWAVMediaFileImpl::Read(const short*& samples, unsigned long& frames) noexcept {
  samples = nullptr;
  frames = 0;
  if (!IsOpen()) return QVERR_FILE_NOT_OPEN;
  if (mode_ == kModeWrite) return QVERR_BAD_STATE;
  while (busy_) std::this_thread::sleep_for(kBusyPoll);
  return conversion_.IsOpen() ? ReadConverted(samples, frames) : ReadPCM(samples, frames);
}

// Reads data from the position that has been reached.
QVERRORCODE_TAG CWAVMediaFileImpl::Fetch(std::size_t count) noexcept {
  std::size_t got = 0;
  const bool isRead = stream_.Seek(dataOffset_ + position_) &&
                      stream_.Read(source_.data(), count, got) && got == count;
  return isRead ? QVERR_OK : QVERR_FILE_IO;
}

QVERRORCODE_TAG CWAVMediaFileImpl::ReadPCM(const short*& samples, unsigned long& frames) noexcept {
  const std::size_t frameBytes = std::size_t{format_.channels} * sizeof(short);
  std::size_t count = std::min<std::size_t>(dataSize_ - position_, kBufferSize);
  count -= count % frameBytes;
  if (count == 0) return QVERR_OK;
  const QVERRORCODE_TAG result = Fetch(count);
  if (result != QVERR_OK) return result;
  position_ += static_cast<std::uint32_t>(count);
  samples = reinterpret_cast<const short*>(source_.data());
  frames = static_cast<unsigned long>(count / frameBytes);
  return QVERR_OK;
}

QVERRORCODE_TAG CWAVMediaFileImpl::ReadConverted(const short*& samples,
                                                 unsigned long& frames) noexcept {
  std::size_t produced = 0;
  // More than once when a coding takes bytes in and gives nothing back yet.
  while (produced == 0) {
    const std::size_t count = std::min<std::size_t>(dataSize_ - position_, kBufferSize);
    const bool isAtEnd = count == 0;
    const ConvertExtent extent = isAtEnd        ? ConvertExtent::kEnd
                                 : hasLeftover_ ? ConvertExtent::kAnything
                                                : ConvertExtent::kWholeBlocks;
    std::size_t used = 0;
    QVERRORCODE_TAG result = isAtEnd ? QVERR_OK : Fetch(count);
    if (result == QVERR_OK) result = conversion_.Convert(count, extent, used, produced);
    if (result != QVERR_OK) return result;
    if (isAtEnd && produced == 0) return QVERR_OK;
    // The end of the data that is no whole frame: nothing will ever come of it.
    if (used == 0 && produced == 0 && hasLeftover_) used = count;
    if (used < count) hasLeftover_ = true;
    position_ += static_cast<std::uint32_t>(used);
  }
  samples = conversion_.Samples();
  frames =
      static_cast<unsigned long>(produced / sizeof(short) / static_cast<unsigned>(facts_.channels));
  return QVERR_OK;
}

QVERRORCODE_TAG CWAVMediaFileImpl::Close() noexcept {
  const QVERRORCODE_TAG result = mode_ == kModeWrite ? FinishWriting() : QVERR_OK;
  if (result != QVERR_OK) {
    Abandon();
  } else {
    Reset();
  }
  return result;
}

void CWAVMediaFileImpl::Reset() noexcept {
  conversion_.Close();
  encoder_ = nullptr;
  stream_.Close();
  buffer_.Reset();
  source_ = {};
  name_.clear();
  format_ = {};
  facts_ = {};
  dataOffset_ = 0;
  dataSize_ = 0;
  position_ = 0;
  hasLeftover_ = false;
  pending_ = 0;
  frameCount_ = 0;
  isCreated_ = false;
  mode_ = 0;
}

}  // namespace Quorvex
