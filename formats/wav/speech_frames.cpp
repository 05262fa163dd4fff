// Samples are taken apart, coded a channel at a time, and put together again as frames:
//
//     L R L R ... --> L L ... --> encoder --> queue --+
//                 \-> R R ... --> encoder --> queue --+--> frame L, frame R, frame L, ...
#include "formats/wav/speech_frames.h"

#include <algorithm>
#include <utility>

namespace Quorvex {
namespace {

// SetInputSampleRate answers a frequency that needs no conversion with itself.
QVERRORCODE_TAG SetFrequency(IPPEncoder& encoder, int frequency) {
  if (encoder.GetInputSampleRate() == frequency) return QVERR_OK;
  const int result = encoder.SetInputSampleRate(frequency);
  if (frequency == encoder.GetCodecSampleRate() || result == QVERR_OK) return QVERR_OK;
  encoder.SetInputSampleRate(0);
  return static_cast<QVERRORCODE_TAG>(result);
}

}  // namespace

QVERRORCODE_TAG SpeechFrames::Queue::Write(const void* data, unsigned long count) {
  const std::size_t before = bytes.Count();
  if (!bytes.Resize(before + count)) return QVERR_CREATE_FAILED;
  std::copy_n(static_cast<const unsigned char*>(data), count, bytes.Data() + before);
  return QVERR_OK;
}

QVERRORCODE_TAG SpeechFrames::Select(IPPCoder::CODEC codec) noexcept {
  if (encoders_[0] != nullptr && encoders_[0]->GetCodec() == codec) {
    const bool areReset = encoders_[0]->Reset() && encoders_[1]->Reset();
    return areReset ? QVERR_OK : QVERR_CREATE_FAILED;
  }
  if (!IPPCoder::IsLicensedCodec(codec)) return QVERR_CODEC_NOT_LICENSED;
  std::array<IPPEncoderPtr, kMostChannels> made;
  for (std::size_t i = 0; i < made.size(); ++i) {
    made[i].reset(make_(codec));
    if (made[i] == nullptr) return QVERR_CREATE_FAILED;
    made[i]->SetSink(&queues_[i]);
  }
  encoders_ = std::move(made);
  return QVERR_OK;
}

std::uint32_t SpeechFrames::SamplingFrequency() const noexcept {
  return static_cast<std::uint32_t>(encoders_[0]->GetCodecSampleRate());
}

QVERRORCODE_TAG SpeechFrames::Begin(std::size_t channels, std::uint32_t frequency) noexcept {
  if (!std::in_range<int>(frequency)) return QVERR_INVALID_ARGUMENT;
  channels_ = channels;
  frequency_ = frequency;
  frames_ = 0;
  for (std::size_t i = 0; i < channels_; ++i) {
    const QVERRORCODE_TAG result = SetFrequency(*encoders_[i], static_cast<int>(frequency));
    if (result != QVERR_OK) return result;
    if (!encoders_[i]->Reset()) return QVERR_CREATE_FAILED;
    queues_[i].bytes.Clear();
  }
  return QVERR_OK;
}

QVERRORCODE_TAG SpeechFrames::Encode(const short* samples, std::size_t frames) noexcept {
  frames_ += frames;
  const auto count = static_cast<unsigned long>(frames);
  if (frames == 0) return QVERR_OK;  // to an encoder, the end
  if (channels_ == 1) return encoders_[0]->Write(samples, count);
  if (!oneChannel_.Resize(frames)) return QVERR_CREATE_FAILED;
  for (std::size_t channel = 0; channel < channels_; ++channel) {
    for (std::size_t i = 0; i < frames; ++i) oneChannel_[i] = samples[i * channels_ + channel];
    const QVERRORCODE_TAG result = encoders_[channel]->Write(oneChannel_.Data(), count);
    if (result != QVERR_OK) return result;
  }
  return QVERR_OK;
}

QVERRORCODE_TAG SpeechFrames::End() noexcept {
  for (std::size_t i = 0; i < channels_; ++i) {
    const QVERRORCODE_TAG result = encoders_[i]->Write(nullptr, 0);
    if (result != QVERR_OK) return result;
  }
  return QVERR_OK;
}

QVERRORCODE_TAG SpeechFrames::Take(std::span<const unsigned char>& blocks) noexcept {
  // Encoders that were given the same number of samples have made the same number of frames.
  const auto frame = static_cast<std::size_t>(encoders_[0]->GetCompressedFrameBytes());
  const std::size_t block = frame * channels_;
  const std::size_t count = queues_[0].bytes.Count() / frame;
  if (!blocks_.Resize(count * block)) return QVERR_CREATE_FAILED;
  for (std::size_t channel = 0; channel < channels_; ++channel) {
    CFTarray<unsigned char>& queued = queues_[channel].bytes;
    for (std::size_t i = 0; i < count; ++i) {
      std::copy_n(queued.Data() + i * frame, frame, blocks_.Data() + i * block + channel * frame);
    }
    queued.Clear();
  }
  blocks = {blocks_.Data(), blocks_.Count()};
  return QVERR_OK;
}

// A conversion makes a sample of each period that was begun.
std::uint64_t SpeechFrames::Count() const noexcept {
  const std::uint64_t to = SamplingFrequency();
  return frames_ / frequency_ * to + (frames_ % frequency_ * to + frequency_ - 1) / frequency_;
}

}  // namespace Quorvex
