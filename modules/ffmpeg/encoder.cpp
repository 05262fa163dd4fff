// GSM 6.10 as wave files have it: blocks of 65 bytes, each of two frames of 160 samples.
#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>
#include <new>

#include "modules/ffmpeg/coder.h"
#include "modules/ffmpeg/ffmpeg.h"

namespace Quorvex::ffmpeg {
namespace {

// Source: RFC 2361, A.23, and the records of all wave files with this coding.
constexpr std::uint32_t kTag = 0x31;
constexpr std::uint32_t kBlockBytes = 65;
constexpr std::uint32_t kBlockSamples = 320;
constexpr unsigned char kExtra[] = {kBlockSamples & 0xFF, kBlockSamples >> 8};
constexpr std::size_t kSourceBytes = kBlockSamples * sizeof(std::int16_t);

// Null in an FFmpeg without it.
const AVCodec* FindEncoder() { return avcodec_find_encoder_by_name("libgsm_ms"); }

class Encoder final : public MediaAccessorCoder {
 public:
  // False when it cannot begin.
  bool Open(const AVCodec* codec, int frequency);

  std::size_t OutputBytes(std::size_t sourceBytes) const noexcept override {
    return (sourceBytes / kSourceBytes + 1) * kBlockBytes;
  }
  bool Convert(std::span<const unsigned char> source, MediaAccessorConvertExtent extent,
               std::span<unsigned char> output, std::size_t& used,
               std::size_t& produced) noexcept override;

 private:
  bool EncodeBlock(std::span<const unsigned char> source, unsigned char* output);

  Owner<AVCodecContext> encoder_;
  Owner<AVPacket> packet_;
  Owner<AVFrame> frame_;
};

bool Encoder::Open(const AVCodec* codec, int frequency) {
  encoder_.reset(avcodec_alloc_context3(codec));
  packet_.reset(av_packet_alloc());
  frame_.reset(av_frame_alloc());
  if (encoder_ == nullptr || packet_ == nullptr || frame_ == nullptr) return false;
  encoder_->log_level_offset = kUnheard;
  encoder_->thread_count = 1;
  encoder_->sample_fmt = AV_SAMPLE_FMT_S16;
  encoder_->sample_rate = frequency;
  av_channel_layout_default(&encoder_->ch_layout, 1);
  // Other frequencies than the telephone's.
  encoder_->strict_std_compliance = FF_COMPLIANCE_UNOFFICIAL;
  if (avcodec_open2(encoder_.get(), codec, nullptr) < 0) return false;

  frame_->format = AV_SAMPLE_FMT_S16;
  frame_->sample_rate = frequency;
  frame_->nb_samples = kBlockSamples;
  return av_channel_layout_copy(&frame_->ch_layout, &encoder_->ch_layout) == 0 &&
         av_frame_get_buffer(frame_.get(), 0) == 0;
}

bool Encoder::Convert(std::span<const unsigned char> source, MediaAccessorConvertExtent extent,
                      std::span<unsigned char> output, std::size_t& used,
                      std::size_t& produced) noexcept {
  used = produced = 0;
  source = source.first(Convertible(source.size(), extent, kSourceBytes));
  while (used < source.size() && output.size() - produced >= kBlockBytes) {
    const std::size_t bytes = std::min(source.size() - used, kSourceBytes);
    if (!EncodeBlock(source.subspan(used, bytes), output.data() + produced)) return false;
    used += bytes;
    produced += kBlockBytes;
  }
  return true;
}

// A shorter block is filled up with silence.
bool Encoder::EncodeBlock(std::span<const unsigned char> source, unsigned char* output) {
  if (av_frame_make_writable(frame_.get()) < 0) return false;
  std::memcpy(frame_->data[0], source.data(), source.size());
  std::memset(frame_->data[0] + source.size(), 0, kSourceBytes - source.size());
  if (avcodec_send_frame(encoder_.get(), frame_.get()) < 0 ||
      avcodec_receive_packet(encoder_.get(), packet_.get()) < 0) {
    return false;
  }
  const bool isBlock = packet_->size == static_cast<int>(kBlockBytes);
  if (isBlock) std::memcpy(output, packet_->data, kBlockBytes);
  av_packet_unref(packet_.get());
  return isBlock;
}

}  // namespace

bool CompleteEncoding(MediaAccessorCoding& target) noexcept {
  if (target.tag != kTag || target.channels != 1 || target.samplesPerSecond < 1 ||
      target.samplesPerSecond > INT_MAX || FindEncoder() == nullptr) {
    return false;
  }
  target.averageBytesPerSecond = static_cast<std::uint32_t>(std::uint64_t{target.samplesPerSecond} *
                                                            kBlockBytes / kBlockSamples);
  target.blockAlign = kBlockBytes;
  target.bitsPerSample = 0;
  target.extra = kExtra;
  target.extraBytes = sizeof(kExtra);
  return true;
}

std::unique_ptr<MediaAccessorCoder> OpenEncoder(const MediaAccessorCoding& target) {
  MediaAccessorCoding completed = target;
  if (!CompleteEncoding(completed) || target.blockAlign != completed.blockAlign) return nullptr;
  auto encoder = std::make_unique<Encoder>();
  const auto frequency = static_cast<int>(target.samplesPerSecond);
  return encoder->Open(FindEncoder(), frequency) ? std::move(encoder) : nullptr;
}

}  // namespace Quorvex::ffmpeg
