// The resampling accessor. A read takes one block of the source apart into the channels' buffers,
// as much as fits at a time, lets each channel's filter run, and interleaves what they made. All
// channels are always at the same place of the stream.
#include <MediaAccessor/resampling_media_accessor.h>

#include <algorithm>
#include <limits>
#include <span>
#include <string>
#include <string_view>

#include <MediaAccessor/text.h>

#include "pipeline/channel_split.h"
#include "pipeline/single_channel_resampler.h"
#include "support/allocator.h"
#include "support/cft_array.h"
#include "support/no_throw.h"
#include "support/text.h"

namespace Quorvex {
namespace {

constexpr std::wstring_view kWithoutSource = L"No source.";

// A frequency that does not fit is as good as unknown.
int ToInt(unsigned long value) {
  constexpr int kMost = std::numeric_limits<int>::max();
  return value <= static_cast<unsigned long>(kMost) ? static_cast<int>(value) : 0;
}

class ResamplingMediaAccessorImpl final : public ResamplingMediaAccessor, public AllocatedObject {
 public:
  using CMediaAccessor::GetDescription;

  unsigned long GetSamplingFrequency() const override {
    return outputFrequency_ > 0 ? static_cast<unsigned long>(outputFrequency_) : 0;
  }
  unsigned long GetChannelCount() const override {
    return static_cast<unsigned long>(resamplers_.Count());
  }
  QVERRORCODE_TAG ReadBlock(const short*& samples, unsigned long& frames, void* context) override;
  unsigned long GetDescription(wchar_t* buffer, unsigned long capacity) const override;
  QVERRORCODE_TAG SetSource(CMediaAccessor* source) override;
  QVERRORCODE_TAG SetOutputSamplingFrequency(int hertz) override;

 private:
  void BeginStream();
  QVERRORCODE_TAG SetUpResamplers(int inputFrequency);
  void Take(const short* samples, std::size_t frames, std::size_t channels);
  void TakeApart(const short* samples, std::size_t frames, std::size_t channels);
  void HandOut(const short*& samples, unsigned long& frames, std::size_t channels);
  void Interleave(std::size_t frames, std::size_t channels);

  int outputFrequency_ = 0;           // Hz
  unsigned long channels_ = 0;        // of the source when the stream began
  QVERRORCODE_TAG setUp_ = QVERR_OK;  // why there are no resamplers
  PolyphaseFilter filter_;
  CFTarray<SingleChannelResampler> resamplers_;
  CFTarray<float*> inputs_;         // where each resampler's next input goes
  CFTarray<const short*> outputs_;  // of the resamplers
  CFTarray<short> output_;          // the block, where it has several channels
};

QVERRORCODE_TAG ResamplingMediaAccessorImpl::SetSource(CMediaAccessor* source) {
  return NoThrow([&] {
    const QVERRORCODE_TAG result = AttachSource(source);
    // How the beginning of the stream went is not the answer, on purpose.
    if (result == QVERR_OK) BeginStream();
    return result;
  });
}

QVERRORCODE_TAG ResamplingMediaAccessorImpl::SetOutputSamplingFrequency(int hertz) {
  outputFrequency_ = hertz;
  SetSource(GetSource());
  return QVERR_OK;
}

void ResamplingMediaAccessorImpl::BeginStream() {
  const CMediaAccessor* const source = GetSource();
  if (outputFrequency_ < 1) return;
  resamplers_.Clear();
  channels_ = source->GetChannelCount();
  setUp_ = channels_ > 0 ? SetUpResamplers(ToInt(source->GetSamplingFrequency())) : QVERR_OK;
  if (setUp_ != QVERR_OK) resamplers_.Clear();
}

QVERRORCODE_TAG ResamplingMediaAccessorImpl::SetUpResamplers(int inputFrequency) {
  const QVERRORCODE_TAG result = InitialiseResampling(filter_, inputFrequency, outputFrequency_);
  if (result != QVERR_OK) return result;
  if (!resamplers_.Resize(channels_) || !inputs_.Resize(channels_) || !outputs_.Resize(channels_)) {
    return QVERR_CREATE_FAILED;
  }
  for (unsigned long channel = 0; channel < channels_; ++channel) {
    if (resamplers_[channel].Initialise(filter_) != QVERR_OK) return QVERR_CREATE_FAILED;
  }
  return QVERR_OK;
}

QVERRORCODE_TAG ResamplingMediaAccessorImpl::ReadBlock(const short*& samples, unsigned long& frames,
                                                       void* context) {
  samples = nullptr;
  frames = 0;
  CMediaAccessor* const source = GetSource();
  if (source == nullptr || outputFrequency_ < 1) return QVERR_INVALID_ARGUMENT;
  return NoThrow([&] {
    unsigned long taken = 0;
    do {
      const unsigned long channels = source->GetChannelCount();
      const short* block = nullptr;
      taken = 0;
      const QVERRORCODE_TAG result = source->ReadBlock(block, taken, context);
      if (result != QVERR_OK) return result;
      if (setUp_ != QVERR_OK) return setUp_;
      if (channels == 0 || resamplers_.IsEmpty()) return QVERR_OK;
      Take(block, taken, channels);
      HandOut(samples, frames, channels);
      // 0 frames are the end of a stream, so a block too short to give any is not the last word.
    } while (frames == 0 && taken > 0);
    return QVERR_OK;
  });
}

void ResamplingMediaAccessorImpl::Take(const short* samples, std::size_t frames,
                                       std::size_t channels) {
  const std::span resamplers(resamplers_.Data(), resamplers_.Count());
  for (SingleChannelResampler& resampler : resamplers) resampler.BeginOutput(frames);
  if (frames == 0) {
    for (SingleChannelResampler& resampler : resamplers) resampler.Flush();
  }
  while (frames > 0) {
    const std::size_t fitting = std::min(frames, resamplers.front().Room());
    TakeApart(samples, fitting, channels);
    for (SingleChannelResampler& resampler : resamplers) {
      resampler.Advance(fitting);
      resampler.Run();
    }
    samples += fitting * channels;
    frames -= fitting;
  }
}

// Channels that the source no longer has are silent.
void ResamplingMediaAccessorImpl::TakeApart(const short* samples, std::size_t frames,
                                            std::size_t channels) {
  const std::size_t count = resamplers_.Count();
  for (std::size_t c = 0; c < count; ++c) inputs_[c] = resamplers_[c].End();
  SplitChannels(samples, frames, channels, std::min(channels, count), inputs_.Data());
  for (std::size_t c = channels; c < count; ++c) std::fill_n(inputs_[c], frames, 0.0F);
}

void ResamplingMediaAccessorImpl::HandOut(const short*& samples, unsigned long& frames,
                                          std::size_t channels) {
  const std::span resamplers(resamplers_.Data(), resamplers_.Count());
  const auto filled =
      std::find_if(resamplers.begin(), resamplers.end(),
                   [](const SingleChannelResampler& each) { return !each.Output().IsEmpty(); });
  if (filled == resamplers.end()) return;
  const std::size_t count = filled->Output().Count();
  if (channels == 1 && filled == resamplers.begin()) {
    samples = filled->Output().Data();  // as it stands
  } else {
    if (!output_.Resize(count * channels)) return;
    Interleave(count, channels);
    samples = output_.Data();
  }
  frames = static_cast<unsigned long>(count);
}

// Channels that the source did not have when the stream began are silent, and so is what memory
// could not hold.
void ResamplingMediaAccessorImpl::Interleave(std::size_t frames, std::size_t channels) {
  const std::size_t count = std::min(channels, resamplers_.Count());
  bool isWhole = count == channels;
  for (std::size_t c = 0; c < count; ++c) {
    outputs_[c] = resamplers_[c].Output().Data();
    isWhole = isWhole && resamplers_[c].Output().Count() == frames;
  }
  if (isWhole) {
    JoinChannels(outputs_.Data(), channels, frames, output_.Data());
    return;
  }
  std::fill_n(output_.Data(), frames * channels, short{0});
  for (std::size_t c = 0; c < count; ++c) {
    const std::size_t there = std::min(frames, resamplers_[c].Output().Count());
    for (std::size_t f = 0; f < there; ++f) output_[f * channels + c] = outputs_[c][f];
  }
}

unsigned long ResamplingMediaAccessorImpl::GetDescription(wchar_t* buffer,
                                                          unsigned long capacity) const {
  return NoThrowOr(0UL, [&] {
    const CMediaAccessor* const source = GetSource();
    if (source == nullptr) return CopyText(kWithoutSource, buffer, capacity);
    const std::wstring description = TextOf<wchar_t>(
        [source](wchar_t* text, unsigned long size) { return source->GetDescription(text, size); });
    return CopyText(L"Source: " + description + L" Output Sampling Frequency: " +
                        std::to_wstring(outputFrequency_),
                    buffer, capacity);
  });
}

}  // namespace

ResamplingMediaAccessor::ResamplingMediaAccessor() = default;
ResamplingMediaAccessor::~ResamplingMediaAccessor() = default;

ResamplingMediaAccessor* ResamplingMediaAccessor::CreateInstance() noexcept {
  return new ResamplingMediaAccessorImpl;
}

}  // namespace Quorvex
