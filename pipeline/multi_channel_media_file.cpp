// The base of the readers: raw block -> mixer -> caller.
#include <MediaAccessor/multi_channel_media_file.h>

#include <algorithm>
#include <utility>

#include <MediaAccessor/media_accessor_mixer.h>
#include <MediaAccessor/ownership.h>

#include "support/no_throw.h"
#include "support/text.h"

namespace Quorvex {
namespace {

// Whether the mixer would only copy a raw block of so many channels.
bool PassesThrough(const MediaAccessorMixer& mixer, int channels) {
  if (channels == 1) return mixer.GetChannelCount() == 1;
  return channels > 1 && mixer.GetChannelMode() == kChannelModeSeparate &&
         mixer.GetSelectedChannelCount() == channels;
}

}  // namespace

MultiChannelMediaFile::MultiChannelMediaFile() = default;
MultiChannelMediaFile::~MultiChannelMediaFile() { Quorvex::Release(mixer_); }

QVERRORCODE_TAG MultiChannelMediaFile::SelectChannels(const int* channels, int count, int mode) {
  if (mixer_ == nullptr) return QVERR_FILE_NOT_OPEN;
  return NoThrow([&] {
    mixer_->SetChannelCount(GetTrackChannelCount());
    return mixer_->SelectChannels(channels, count, mode);
  });
}

int MultiChannelMediaFile::GetSelectedChannelCount() const {
  return mixer_ != nullptr ? mixer_->GetSelectedChannelCount() : 0;
}

int MultiChannelMediaFile::GetSelectedChannels(int* channels, int capacity) const {
  if (mixer_ != nullptr) return mixer_->GetSelectedChannels(channels, capacity);
  if (channels != nullptr && capacity > 0) std::fill_n(channels, capacity, 0);
  return 0;
}

int MultiChannelMediaFile::GetChannelMode() const {
  return mixer_ != nullptr ? mixer_->GetChannelMode() : kChannelModeSeparate;
}

QVERRORCODE_TAG MultiChannelMediaFile::Open(const wchar_t* path) {
  return NoThrow([&] {
    if (IsOpen()) return QVERR_ALREADY_OPEN;
    std::wstring name = ToWide(path);
    const QVERRORCODE_TAG opened = OpenFormat(name.c_str());
    if (opened != QVERR_OK) return opened;
    // From here on a failure, thrown or returned, gives the file back to the format.
    const QVERRORCODE_TAG result = NoThrow([&] {
      if (name.empty()) return QVERR_BAD_FILE_NAME;
      mixer_ = MediaAccessorMixer::CreateInstance();
      if (mixer_ == nullptr) return QVERR_CREATE_FAILED;
      const QVERRORCODE_TAG selected =
          MultiChannelMediaFile::SelectChannels(nullptr, 0, GetDefaultChannelMode());
      // Only memory counts here: a file without channels fails when it is read.
      return selected == QVERR_CREATE_FAILED ? selected : QVERR_OK;
    });
    if (result == QVERR_OK) {
      fileName_ = std::move(name);
    } else {
      Quorvex::Release(std::exchange(mixer_, nullptr));
      CloseFormat();
    }
    return result;
  });
}

QVERRORCODE_TAG MultiChannelMediaFile::Open(const char* path) {
  return NoThrow([&] { return Open(ToWide(path).c_str()); });
}

QVERRORCODE_TAG MultiChannelMediaFile::Close() {
  if (!IsOpen()) return QVERR_FILE_NOT_OPEN;
  Quorvex::Release(std::exchange(mixer_, nullptr));
  fileName_.clear();
  return NoThrow([this] {
    CloseFormat();
    return QVERR_OK;
  });
}

bool MultiChannelMediaFile::IsOpen() const { return !fileName_.empty() && mixer_ != nullptr; }

unsigned long MultiChannelMediaFile::GetFileName(wchar_t* buffer, unsigned long capacity) const {
  return CopyText(fileName_, buffer, capacity);
}

unsigned long MultiChannelMediaFile::GetFileName(char* buffer, unsigned long capacity) const {
  return CopyText(fileName_, buffer, capacity);
}

unsigned long MultiChannelMediaFile::GetChannelCount() const {
  return mixer_ != nullptr ? mixer_->GetChannelCount() : 0;
}

QVERRORCODE_TAG MultiChannelMediaFile::ReadBlock(const short*& samples, unsigned long& frames,
                                                 void* context) {
  samples = nullptr;
  frames = 0;
  if (!IsOpen()) return QVERR_FILE_NOT_OPEN;
  return NoThrow([&] {
    const short* block = nullptr;
    unsigned long count = 0;
    QVERRORCODE_TAG result = ReadRawBlock(block, count, context);
    if (result != QVERR_OK) return result;
    const int channels = GetTrackChannelCount();
    if (PassesThrough(*mixer_, channels)) {
      // A block of nothing, or no block, is the end.
      if (block == nullptr || count == 0) return QVERR_OK;
      samples = block;
      frames = count;
      return QVERR_OK;
    }
    result = mixer_->Write(block, static_cast<unsigned long>(sizeof(short)) * count *
                                      static_cast<unsigned long>(std::max(channels, 0)));
    return result == QVERR_OK ? mixer_->ReadBlock(samples, frames, context) : result;
  });
}

unsigned long MultiChannelMediaFile::GetTypeDescription(char* buffer,
                                                        unsigned long capacity) const {
  return GetFormatDescription(buffer, capacity);
}

unsigned long MultiChannelMediaFile::GetTypeDescription(wchar_t* buffer,
                                                        unsigned long capacity) const {
  return GetFormatDescription(buffer, capacity);
}

}  // namespace Quorvex
