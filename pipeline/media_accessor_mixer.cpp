// The mixer. One cycle is a push and a read: Write fills the output buffer, ReadBlock hands it out
// and marks it delivered, and the next Write empties it first.
#include <MediaAccessor/media_accessor_mixer.h>

#include <algorithm>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

#include <MediaAccessor/text.h>

#include "pipeline/mix_loops.h"
#include "support/allocator.h"
#include "support/cft_array.h"
#include "support/no_throw.h"
#include "support/text.h"

namespace Quorvex {
namespace {

constexpr std::wstring_view kDescription = L"Mixer with source: ";
constexpr std::wstring_view kTypeDescription = L"Quorvex Mixer media accessor";

class MediaAccessorMixerImpl final : public MediaAccessorMixer, public AllocatedObject {
 public:
  using CMediaAccessor::GetDescription;
  using CMediaAccessor::GetTypeDescription;

  // CMediaSink
  QVERRORCODE_TAG SetChannelCount(int channels) override;
  QVERRORCODE_TAG Write(const void* data, unsigned long count) override;
  void Release() override { delete this; }
  void SetTarget(CMediaSink* target) override;

  // MediaAccessorChannelSelector
  QVERRORCODE_TAG SelectChannels(const int* channels, int count, int mode) override;
  int GetSelectedChannelCount() const override { return static_cast<int>(selected_.size()); }
  int GetSelectedChannels(int* channels, int capacity) const override;
  int GetChannelMode() const override { return mode_; }

  // CMediaAccessorDecorator
  unsigned long GetChannelCount() const override {
    return mode_ == kChannelModeSeparate ? static_cast<unsigned long>(selected_.size()) : 1;
  }
  QVERRORCODE_TAG ReadBlock(const short*& samples, unsigned long& frames, void* context) override;
  unsigned long GetDescription(wchar_t* buffer, unsigned long capacity) const override;
  unsigned long GetTypeDescription(wchar_t* buffer, unsigned long capacity) const override {
    return CopyText(kTypeDescription, buffer, capacity);
  }
  QVERRORCODE_TAG SetSource(CMediaAccessor* source) override;

 private:
  bool SelectionFitsInput() const;
  void TellTarget();
  QVERRORCODE_TAG Mix(const short* samples, std::size_t count);
  void CopyInput(const short* samples, std::size_t count);
  std::size_t Extend(std::size_t frames, std::size_t samplesPerFrame, short*& end);
  void HandOut(const short*& samples, unsigned long& frames);

  CMediaSink* target_ = nullptr;  // not owned
  std::vector<int> selected_;
  int mode_ = kChannelModeAverage;
  CFTarray<short> output_;
  bool delivered_ = false;
  int inputChannels_ = 0;  // 0: not known yet
};

bool MediaAccessorMixerImpl::SelectionFitsInput() const {
  return std::all_of(selected_.begin(), selected_.end(),
                     [this](int channel) { return channel < inputChannels_; });
}

void MediaAccessorMixerImpl::TellTarget() {
  if (target_ == nullptr) return;
  NoThrow([this] { return target_->SetChannelCount(static_cast<int>(GetChannelCount())); });
}

QVERRORCODE_TAG MediaAccessorMixerImpl::SetChannelCount(int channels) {
  if (channels < 1) return QVERR_BAD_CHANNEL_COUNT;
  inputChannels_ = channels;
  const QVERRORCODE_TAG result =
      selected_.empty() ? SelectChannels(nullptr, 0, kChannelModeAverage) : QVERR_OK;
  if (result == QVERR_OK) TellTarget();
  return result;
}

void MediaAccessorMixerImpl::SetTarget(CMediaSink* target) {
  target_ = target;
  if (inputChannels_ > 0) TellTarget();
}

QVERRORCODE_TAG MediaAccessorMixerImpl::SelectChannels(const int* channels, int count, int mode) {
  return NoThrow([&] {
    selected_.clear();
    if (inputChannels_ <= 0) return QVERR_UNSUPPORTED_CHANNELS;
    std::vector<int> selection;
    for (int i = 0; channels != nullptr && i < count; ++i) {
      if (channels[i] >= inputChannels_) return QVERR_UNSUPPORTED_CHANNELS;
      if (channels[i] < 0) {
        selection.clear();
        break;
      }
      selection.push_back(channels[i]);
    }
    if (selection.empty()) {
      selection.resize(static_cast<std::size_t>(inputChannels_));
      std::iota(selection.begin(), selection.end(), 0);
    }
    selected_ = std::move(selection);
    mode_ = mode;
    TellTarget();
    return QVERR_OK;
  });
}

int MediaAccessorMixerImpl::GetSelectedChannels(int* channels, int capacity) const {
  const int count = GetSelectedChannelCount();
  if (channels != nullptr && capacity >= count) {
    std::copy(selected_.begin(), selected_.end(), channels);
  }
  return count;
}

QVERRORCODE_TAG MediaAccessorMixerImpl::Write(const void* data, unsigned long count) {
  if (inputChannels_ <= 0) return QVERR_UNSUPPORTED_CHANNELS;
  if (delivered_) {
    output_.Clear();
    delivered_ = false;
  }
  return NoThrow([&] {
    if (data == nullptr || count == 0) {
      return target_ != nullptr ? target_->Write(nullptr, 0) : QVERR_OK;
    }
    const QVERRORCODE_TAG mixed = Mix(static_cast<const short*>(data), count / sizeof(short));
    if (mixed != QVERR_OK || target_ == nullptr) return mixed;
    delivered_ = true;
    return target_->Write(output_.Data(),
                          static_cast<unsigned long>(output_.Count() * sizeof(short)));
  });
}

QVERRORCODE_TAG MediaAccessorMixerImpl::Mix(const short* samples, std::size_t count) {
  const auto channels = static_cast<std::size_t>(inputChannels_);
  const std::size_t frames = count / channels;
  short* end = nullptr;
  if (channels == 1) {
    // Selection and mode play no part here, so -32768 survives.
    CopyInput(samples, count);
  } else if (mode_ == kChannelModeSeparate && selected_.size() == channels) {
    // As many channels as came in are copied as they stand: the order of the selection is not
    // applied, on purpose.
    CopyInput(samples, frames * channels);
  } else if (!SelectionFitsInput()) {
    return QVERR_UNSUPPORTED_CHANNELS;
  } else if (mode_ == kChannelModeSeparate) {
    const std::size_t room = Extend(frames, selected_.size(), end);
    MixSeparate(samples, room, inputChannels_, selected_, end);
  } else {
    const MixRule rule = mode_ == kChannelModeAverage ? MixRule::kAverage : MixRule::kSum;
    const std::size_t room = Extend(frames, 1, end);
    MixCombined(rule, samples, room, inputChannels_, selected_, end);
  }
  return QVERR_OK;
}

// The output becomes a copy of the input; what memory cannot hold is dropped.
void MediaAccessorMixerImpl::CopyInput(const short* samples, std::size_t count) {
  output_.Clear();
  short* end = nullptr;
  const std::size_t room = Extend(count, 1, end);
  std::copy_n(samples, room, end);
}

// Makes room for frames at the end of the output. Returns for how many there is memory, `end` being
// where they go.
std::size_t MediaAccessorMixerImpl::Extend(std::size_t frames, std::size_t samplesPerFrame,
                                           short*& end) {
  const std::size_t used = output_.Count();
  if (!output_.Reserve(used + frames * samplesPerFrame)) {
    frames = samplesPerFrame > 0 ? (output_.Capacity() - used) / samplesPerFrame : 0;
  }
  output_.Resize(used + frames * samplesPerFrame);
  end = output_.Data() + used;
  return frames;
}

QVERRORCODE_TAG MediaAccessorMixerImpl::ReadBlock(const short*& samples, unsigned long& frames,
                                                  void* context) {
  samples = nullptr;
  frames = 0;
  if (inputChannels_ <= 0) return QVERR_UNSUPPORTED_CHANNELS;
  CMediaAccessor* source = GetSource();
  if (source == nullptr) {
    if (output_.IsEmpty()) {
      delivered_ = true;
    } else {
      HandOut(samples, frames);
    }
    return QVERR_OK;
  }
  return NoThrow([&] {
    const short* block = nullptr;
    unsigned long count = 0;
    QVERRORCODE_TAG result = source->ReadBlock(block, count, context);
    if (result != QVERR_OK || count == 0) return result;
    // A one-channel source fills nothing: what is handed out below is the mixer's own buffer.
    // Wanted.
    if (inputChannels_ != 1) {
      if (source->GetChannelCount() != static_cast<unsigned long>(inputChannels_)) {
        return QVERR_UNSUPPORTED_CHANNELS;
      }
      result = Write(block, static_cast<unsigned long>(sizeof(short)) * count *
                                static_cast<unsigned long>(inputChannels_));
      if (result != QVERR_OK) return result;
    }
    HandOut(samples, frames);
    return QVERR_OK;
  });
}

void MediaAccessorMixerImpl::HandOut(const short*& samples, unsigned long& frames) {
  const unsigned long channels = GetChannelCount();
  samples = output_.Data();
  // Nothing is selected after a refused selection: there is no channel to count frames of.
  frames = channels > 0 ? static_cast<unsigned long>(output_.Count() / channels) : 0;
  delivered_ = true;
}

QVERRORCODE_TAG MediaAccessorMixerImpl::SetSource(CMediaAccessor* source) {
  return NoThrow([&] {
    const QVERRORCODE_TAG result = AttachSource(source);
    if (result != QVERR_OK) return result;
    // A source without channels leaves the input channel count unknown, which reads report.
    inputChannels_ = 0;
    selected_.clear();
    output_.Clear();
    const QVERRORCODE_TAG set = SetChannelCount(static_cast<int>(source->GetChannelCount()));
    return set == QVERR_BAD_CHANNEL_COUNT ? QVERR_OK : set;
  });
}

unsigned long MediaAccessorMixerImpl::GetDescription(wchar_t* buffer,
                                                     unsigned long capacity) const {
  return NoThrowOr(0UL, [&] {
    std::wstring text(kDescription);
    if (const CMediaAccessor* source = GetSource()) {
      text += TextOf<wchar_t>([source](wchar_t* description, unsigned long size) {
        return source->GetDescription(description, size);
      });
    }
    return CopyText(text, buffer, capacity);
  });
}

}  // namespace

MediaAccessorMixer::~MediaAccessorMixer() = default;

MediaAccessorMixer* MediaAccessorMixer::CreateInstance() noexcept {
  return new MediaAccessorMixerImpl;
}

}  // namespace Quorvex
