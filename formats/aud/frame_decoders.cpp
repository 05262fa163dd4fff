// A block of alternating frames, a channel at a time: its frames are gathered, decoded as one
// stretch, and the samples spread to their places.
#include "formats/aud/frame_decoders.h"

#include <algorithm>

namespace Quorvex {
namespace {

// Takes what a decoder pushes to the places of one channel, as far as there is room.
class ChannelSink final : public CMediaSink {
 public:
  ChannelSink(short* samples, std::size_t channels, std::size_t frames)
      : samples_(samples), channels_(channels), frames_(frames) {}

  QVERRORCODE_TAG SetChannelCount(int) override { return QVERR_OK; }
  QVERRORCODE_TAG Write(const void* data, unsigned long count) override {
    const auto* const pushed = static_cast<const short*>(data);
    const std::size_t taken = std::min<std::size_t>(count, frames_);
    if (channels_ == 1) {
      std::copy_n(pushed, taken, samples_);
    } else {
      for (std::size_t i = 0; i < taken; ++i) samples_[i * channels_] = pushed[i];
    }
    samples_ += taken * channels_;
    frames_ -= taken;
    return QVERR_OK;
  }

  void FillUp() {
    for (; frames_ > 0; --frames_, samples_ += channels_) *samples_ = 0;
  }

 private:
  short* samples_;  // the next
  const std::size_t channels_;
  std::size_t frames_;  // that there is room for
};

}  // namespace

bool FrameDecoders::Create(IPPCoder::CODEC codec, long bitRate, std::size_t channels) noexcept {
  Release();
  for (std::size_t i = 0; i < channels; ++i) {
    decoders_[i].reset(IPPDecoder::CreateInstance(codec, bitRate));
    if (decoders_[i] == nullptr) {
      Release();
      return false;
    }
  }
  channels_ = channels;
  return true;
}

void FrameDecoders::Release() noexcept {
  for (IPPDecoderPtr& decoder : decoders_) decoder.reset();
  gathered_.Reset();
  channels_ = 0;
}

std::size_t FrameDecoders::FrameBytes() const noexcept {
  return static_cast<std::size_t>(decoders_[0]->GetCompressedFrameBytes());
}

std::size_t FrameDecoders::FrameSamples() const noexcept {
  const auto bytes = static_cast<std::uint32_t>(FrameBytes());
  return static_cast<std::size_t>(decoders_[0]->SamplesForBytes(bytes));
}

QVERRORCODE_TAG FrameDecoders::Decode(std::span<const unsigned char> bytes, short* samples,
                                      std::size_t frames) noexcept {
  if (channels_ == 1) return DecodeChannel(0, bytes, samples, frames);
  QVERRORCODE_TAG result = QVERR_OK;
  for (std::size_t channel = 0; channel < channels_; ++channel) {
    if (!Gather(channel, bytes)) return QVERR_CREATE_FAILED;
    const std::span<const unsigned char> gathered(gathered_.Data(), gathered_.Count());
    const QVERRORCODE_TAG decoded = DecodeChannel(channel, gathered, samples + channel, frames);
    // The channels after it keep in step.
    if (result == QVERR_OK) result = decoded;
  }
  return result;
}

QVERRORCODE_TAG FrameDecoders::DecodeChannel(std::size_t channel,
                                             std::span<const unsigned char> bytes, short* samples,
                                             std::size_t frames) noexcept {
  ChannelSink sink(samples, channels_, frames);
  IPPDecoder& decoder = *decoders_[channel];
  decoder.SetSink(&sink);
  const QVERRORCODE_TAG result =
      decoder.Decode(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
  decoder.SetSink(nullptr);
  sink.FillUp();
  return result;
}

// False when memory runs out.
bool FrameDecoders::Gather(std::size_t channel, std::span<const unsigned char> bytes) noexcept {
  const std::size_t frame = FrameBytes();
  const std::size_t block = frame * channels_;
  if (!gathered_.Resize((bytes.size() + block - 1) / block * frame)) return false;
  std::size_t count = 0;
  for (std::size_t i = channel * frame; i < bytes.size(); i += block) {
    const std::size_t taken = std::min(frame, bytes.size() - i);
    std::copy_n(bytes.data() + i, taken, gathered_.Data() + count);
    count += taken;
  }
  return gathered_.Resize(count);
}

}  // namespace Quorvex
