// The resampling accessor. A read takes a block of the source apart into the channels' buffers, a
// pass at a time, lets each channel's filter run, and appends what they made, interleaved, to the
// block that it hands out. All channels are always at the same place of the stream, so that each
// makes as many samples as the first.
#include <MediaAccessor/resampling_media_accessor.h>

#include <algorithm>
#include <limits>
#include <string>
#include <string_view>

#include <MediaAccessor/text.h>

#include "pipeline/interleaving.h"
#include "pipeline/single_channel_resampler.h"
#include "support/allocator.h"
#include "support/cft_array.h"
#include "support/no_throw.h"
#include "support/text.h"

namespace Quorvex {
namespace {

constexpr std::wstring_view kWithoutSource = L"No source.";

// Many channels take their input in shorter passes: so many samples of all of them, but not fewer
// than the shortest pass.
constexpr std::size_t kPassSamples = std::size_t{1} << 20;
constexpr std::size_t kShortestPass = 64;

// A block has fewer samples than this.
constexpr std::size_t kMostSamples = std::numeric_limits<std::size_t>::max() / sizeof(short);

// A frequency that does not fit is as good as unknown.
int ToInt(unsigned long value) {
  constexpr int kMost = std::numeric_limits<int>::max();
  return value <= static_cast<unsigned long>(kMost) ? static_cast<int>(value) : 0;
}

class ResamplingMediaAccessorImpl final : public ResamplingMediaAccessor, public AllocatedObject {
 public:
  using CMediaAccessor::GetDescription;

  ResamplingMediaAccessorImpl() {
    // A long block grows over many passes.
    constexpr std::size_t kLargestStep = std::size_t{1} << 24;
    output_.SetGrowth(CFTarray<short>::kDefaultStep, kLargestStep, true, false);
  }

  unsigned long GetSamplingFrequency() const override {
    return outputFrequency_ > 0 ? static_cast<unsigned long>(outputFrequency_) : 0;
  }
  unsigned long GetChannelCount() const override { return channels_; }
  QVERRORCODE_TAG ReadBlock(const short*& samples, unsigned long& frames, void* context) override;
  unsigned long GetDescription(wchar_t* buffer, unsigned long capacity) const override;
  QVERRORCODE_TAG SetSource(CMediaAccessor* source) override;
  QVERRORCODE_TAG SetOutputSamplingFrequency(int hertz) override;

 private:
  QVERRORCODE_TAG BeginStream();
  QVERRORCODE_TAG SetUpResamplers(int inputFrequency);
  void Take(const short* samples, std::size_t frames, std::size_t channels);
  void TakeApart(const short* samples, std::size_t frames, std::size_t channels);
  template <class Make>
  void Append(std::size_t frames, std::size_t channels, const Make& make);
  void Join(std::size_t frames, std::size_t channels, short* output) const;
  std::size_t Finish(std::size_t channels);

  int outputFrequency_ = 0;           // Hz
  unsigned long channels_ = 0;        // of the source when the stream began
  QVERRORCODE_TAG setUp_ = QVERR_OK;  // why there are no resamplers
  PolyphaseFilter filter_;
  CFTarray<SingleChannelResampler> resamplers_;
  std::size_t passInput_ = 0;  // so many frames are taken in a pass
  CFTarray<short> planar_;     // what the channels made, apart
  CFTarray<short*> planes_;    // each channel's part of it
  CFTarray<float*> inputs_;    // where each channel's next input goes
  CFTarray<short> output_;     // the block
  bool isDropped_ = false;     // some of it, for want of memory
};

QVERRORCODE_TAG ResamplingMediaAccessorImpl::SetSource(CMediaAccessor* source) {
  return NoThrow([&] {
    const QVERRORCODE_TAG result = AttachSource(source);
    // How the beginning of the stream went is not the answer, on purpose.
    if (result == QVERR_OK && outputFrequency_ > 0) {
      setUp_ = NoThrow([this] { return BeginStream(); });
    }
    if (setUp_ != QVERR_OK) resamplers_.Clear();
    return result;
  });
}

QVERRORCODE_TAG ResamplingMediaAccessorImpl::SetOutputSamplingFrequency(int hertz) {
  outputFrequency_ = hertz;
  // A source that is refused by now is not read at another frequency than is told.
  if (SetSource(GetSource()) != QVERR_OK) setUp_ = QVERR_INVALID_ARGUMENT;
  return QVERR_OK;
}

QVERRORCODE_TAG ResamplingMediaAccessorImpl::BeginStream() {
  const CMediaAccessor* const source = GetSource();
  resamplers_.Clear();
  channels_ = 0;
  channels_ = source->GetChannelCount();
  return channels_ > 0 ? SetUpResamplers(ToInt(source->GetSamplingFrequency())) : QVERR_OK;
}

QVERRORCODE_TAG ResamplingMediaAccessorImpl::SetUpResamplers(int inputFrequency) {
  const QVERRORCODE_TAG result = InitializeResampling(filter_, inputFrequency, outputFrequency_);
  if (result != QVERR_OK) return result;
  if (!resamplers_.Resize(channels_) || !inputs_.Resize(channels_) || !planes_.Resize(channels_)) {
    return QVERR_CREATE_FAILED;
  }
  const ResamplingPass pass = PlanPass(
      filter_, inputFrequency, outputFrequency_,
      std::clamp(kPassSamples / channels_, kShortestPass, SingleChannelResampler::kMostInput));
  passInput_ = pass.input;
  if (!planar_.Resize(channels_ * pass.output)) return QVERR_CREATE_FAILED;
  for (unsigned long channel = 0; channel < channels_; ++channel) {
    planes_[channel] = planar_.Data() + channel * pass.output;
    if (resamplers_[channel].Initialize(filter_, passInput_) != QVERR_OK)
      return QVERR_CREATE_FAILED;
  }
  return QVERR_OK;
}

QVERRORCODE_TAG ResamplingMediaAccessorImpl::ReadBlock(const short*& samples, unsigned long& frames,
                                                       void* context) {
  samples = nullptr;
  frames = 0;
  CMediaAccessor* const source = GetSource();
  if (source == nullptr || outputFrequency_ < 1 || setUp_ == QVERR_INVALID_ARGUMENT) {
    return QVERR_INVALID_ARGUMENT;
  }
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
      if (block == nullptr) taken = 0;
      Take(block, taken, channels);
      frames = static_cast<unsigned long>(Finish(channels));
      if (frames > 0) samples = output_.Data();
      if (frames == 0 && isDropped_) return QVERR_CREATE_FAILED;
      // 0 frames are the end of a stream, so a block too short to give any is not the last word.
    } while (frames == 0 && taken > 0);
    return QVERR_OK;
  });
}

void ResamplingMediaAccessorImpl::Take(const short* samples, std::size_t frames,
                                       std::size_t channels) {
  SingleChannelResampler& first = resamplers_[0];
  output_.Clear();
  isDropped_ = false;
  if (frames == 0) {
    Append(first.TailCount(), channels,
           [](SingleChannelResampler& resampler, short* output) { resampler.Flush(output); });
    return;
  }
  while (frames > 0) {
    const std::size_t fitting = std::min(frames, passInput_);
    TakeApart(samples, fitting, channels);
    Append(first.OutputCount(fitting), channels,
           [fitting](SingleChannelResampler& resampler, short* output) {
             resampler.Run(fitting, output);
           });
    samples += fitting * channels;
    frames -= fitting;
  }
}

// Channels that the source no longer has are silent.
void ResamplingMediaAccessorImpl::TakeApart(const short* samples, std::size_t frames,
                                            std::size_t channels) {
  const std::size_t count = resamplers_.Count();
  for (std::size_t c = 0; c < count; ++c) inputs_[c] = resamplers_[c].End();
  Deinterleave(samples, frames, channels, std::min(channels, count), inputs_.Data());
  for (std::size_t c = channels; c < count; ++c) std::fill_n(inputs_[c], frames, 0.0F);
}

// Lets every channel make `frames` samples. Where there is no memory for them they are dropped.
template <class Make>
void ResamplingMediaAccessorImpl::Append(std::size_t frames, std::size_t channels,
                                         const Make& make) {
  const std::size_t before = output_.Count();
  const bool hasRoom = channels <= (kMostSamples - before) / std::max<std::size_t>(frames, 1) &&
                       output_.Resize(before + frames * channels);
  isDropped_ = isDropped_ || !hasRoom;
  short* const output = hasRoom ? output_.Data() + before : nullptr;
  for (std::size_t c = 0; c < resamplers_.Count(); ++c) {
    short* const made = channels == 1 ? output : planes_[c];
    make(resamplers_[c], hasRoom && c < channels ? made : nullptr);
  }
  if (hasRoom && channels > 1) Join(frames, channels, output);
}

// Channels that the source did not have when the stream began are silent.
void ResamplingMediaAccessorImpl::Join(std::size_t frames, std::size_t channels,
                                       short* output) const {
  const std::size_t count = resamplers_.Count();
  if (channels > count) std::fill_n(output, frames * channels, short{0});
  Interleave(planes_.Data(), std::min(channels, count), frames, channels, output);
}

// The frames of the block. Whoever counts its channels by GetChannelCount, where the source has
// fewer by now, reads silence behind them.
std::size_t ResamplingMediaAccessorImpl::Finish(std::size_t channels) {
  const std::size_t frames = output_.Count() / channels;
  const std::size_t count = output_.Count();
  if (channels >= channels_) return frames;
  if (!output_.Resize(frames * channels_)) {
    isDropped_ = true;
    return 0;
  }
  std::fill(output_.Data() + count, output_.Data() + output_.Count(), short{0});
  return frames;
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
