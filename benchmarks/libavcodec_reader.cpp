// Packets to a decoder, its frames averaged by a plain loop.
#include "benchmarks/libavcodec_reader.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

#include "benchmarks/average.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

namespace benchmarks {
namespace {

struct Closer {
  void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
  void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
  void operator()(AVPacket* packet) const { av_packet_free(&packet); }
  void operator()(AVFrame* frame) const { av_frame_free(&frame); }
  void operator()(std::FILE* file) const { std::fclose(file); }
};

template <class Object>
using Owner = std::unique_ptr<Object, Closer>;

// Takes frames out of a decoder and averages them.
class MonoCounter {
 public:
  explicit MonoCounter(AVCodecContext& decoder) : decoder_(decoder), frame_(av_frame_alloc()) {}

  // A null packet is the end. False on failure.
  bool Decode(const AVPacket* packet) {
    if (avcodec_send_packet(&decoder_, packet) < 0) return false;
    while (avcodec_receive_frame(&decoder_, frame_.get()) == 0) {
      if (!Average()) return false;
    }
    return true;
  }

  unsigned long long Frames() const { return frames_; }

 private:
  bool Average() {
    const auto count = static_cast<std::size_t>(frame_->nb_samples);
    mono_.resize(std::max(mono_.size(), count));
    const int channels = frame_->ch_layout.nb_channels;
    if (frame_->format == AV_SAMPLE_FMT_S16) {
      AverageToMono(reinterpret_cast<const short*>(frame_->data[0]), count, channels, mono_.data());
    } else if (frame_->format == AV_SAMPLE_FMT_FLT) {
      AverageToMono(reinterpret_cast<const float*>(frame_->data[0]), count, channels, mono_.data());
    } else if (frame_->format == AV_SAMPLE_FMT_S16P) {
      const auto* const left = reinterpret_cast<const short*>(frame_->data[0]);
      const auto* const right = reinterpret_cast<const short*>(frame_->data[channels - 1]);
      for (std::size_t f = 0; channels == 2 && f < count; ++f) {
        mono_[f] = static_cast<short>((left[f] + right[f]) / 2);
      }
      benchmark::ClobberMemory();
    } else {
      return false;
    }
    frames_ += count;
    return true;
  }

  AVCodecContext& decoder_;
  Owner<AVFrame> frame_;
  std::vector<short> mono_;
  unsigned long long frames_ = 0;
};

}  // namespace

unsigned long long ReadLibavformat(const std::string& path) {
  av_log_set_level(AV_LOG_ERROR);  // it warns of several blocks in a packet, which it makes itself
  AVFormatContext* opened = nullptr;
  if (avformat_open_input(&opened, path.c_str(), nullptr, nullptr) < 0) return 0;
  const Owner<AVFormatContext> format(opened);
  const AVCodecParameters& parameters = *format->streams[0]->codecpar;
  const AVCodec* const codec = avcodec_find_decoder(parameters.codec_id);
  const Owner<AVCodecContext> decoder(avcodec_alloc_context3(codec));
  avcodec_parameters_to_context(decoder.get(), &parameters);
  if (avcodec_open2(decoder.get(), codec, nullptr) < 0) return 0;
  const Owner<AVPacket> packet(av_packet_alloc());
  MonoCounter counter(*decoder);
  while (av_read_frame(format.get(), packet.get()) == 0) {
    const bool isDecoded = counter.Decode(packet.get());
    av_packet_unref(packet.get());
    if (!isDecoded) return 0;
  }
  return counter.Decode(nullptr) ? counter.Frames() : 0;
}

unsigned long long ReadLibavcodecVox(const std::string& path) {
  constexpr int kPacketBytes = 4096;
  const Owner<std::FILE> file(std::fopen(path.c_str(), "rb"));
  const AVCodec* const codec = avcodec_find_decoder(AV_CODEC_ID_ADPCM_IMA_OKI);
  const Owner<AVCodecContext> decoder(avcodec_alloc_context3(codec));
  decoder->sample_rate = 8000;
  av_channel_layout_default(&decoder->ch_layout, 1);
  if (file == nullptr || avcodec_open2(decoder.get(), codec, nullptr) < 0) return 0;
  std::vector<unsigned char> bytes(kPacketBytes + AV_INPUT_BUFFER_PADDING_SIZE);
  const Owner<AVPacket> packet(av_packet_alloc());
  MonoCounter counter(*decoder);
  for (;;) {
    packet->data = bytes.data();
    packet->size = static_cast<int>(std::fread(bytes.data(), 1, kPacketBytes, file.get()));
    if (packet->size == 0) return counter.Frames();
    if (!counter.Decode(packet.get())) return 0;
  }
}

}  // namespace benchmarks
