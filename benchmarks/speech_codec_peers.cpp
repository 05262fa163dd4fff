#include "benchmarks/speech_codec_peers.h"

#include <algorithm>

extern "C" {
#include <bcg729/decoder.h>
#include <bcg729/encoder.h>
#include <libavcodec/avcodec.h>
}
#include <spandsp.h>

namespace benchmarks {
namespace {

// Of G.729A.
constexpr std::size_t kFrameSamples = 80;
constexpr std::size_t kFrameBytes = 10;
constexpr std::size_t kG723FrameSamples = 240;

}  // namespace

Bytes EncodeSpandsp(int bitRate, const Samples& samples) {
  g722_encode_state_t* const state = g722_encode_init(nullptr, bitRate, G722_PACKED);
  Bytes bytes(samples.size());
  bytes.resize(static_cast<std::size_t>(
      g722_encode(state, bytes.data(), samples.data(), static_cast<int>(samples.size()))));
  g722_encode_free(state);
  return bytes;
}

Samples DecodeSpandsp(int bitRate, const Bytes& bytes) {
  g722_decode_state_t* const state = g722_decode_init(nullptr, bitRate, G722_PACKED);
  Samples samples(bytes.size() * 4);
  std::size_t count = 0;
  for (std::size_t i = 0; i < bytes.size(); i += kBlock) {
    const std::size_t taken = std::min(kBlock, bytes.size() - i);
    count += static_cast<std::size_t>(
        g722_decode(state, samples.data() + count, bytes.data() + i, static_cast<int>(taken)));
  }
  g722_decode_free(state);
  samples.resize(count);
  return samples;
}

void MakeSpandspDecoder() { g722_decode_free(g722_decode_init(nullptr, 64000, G722_PACKED)); }

Bytes EncodeBcg729(const Samples& samples) {
  bcg729EncoderChannelContextStruct* const encoder = initBcg729EncoderChannel(0);
  Bytes bytes(samples.size() / kFrameSamples * kFrameBytes);
  for (std::size_t i = 0; i < bytes.size() / kFrameBytes; ++i) {
    unsigned char count = 0;  // all frames have the same length
    bcg729Encoder(encoder, &samples[i * kFrameSamples], &bytes[i * kFrameBytes], &count);
  }
  closeBcg729EncoderChannel(encoder);
  return bytes;
}

Samples DecodeBcg729(const Bytes& bytes) {
  bcg729DecoderChannelContextStruct* const decoder = initBcg729DecoderChannel();
  Samples samples(bytes.size() / kFrameBytes * kFrameSamples);
  for (std::size_t i = 0; i < bytes.size() / kFrameBytes; ++i) {
    bcg729Decoder(decoder, &bytes[i * kFrameBytes], kFrameBytes, 0, 0, 0,
                  &samples[i * kFrameSamples]);
  }
  closeBcg729DecoderChannel(decoder);
  return samples;
}

void MakeBcg729Decoder() { closeBcg729DecoderChannel(initBcg729DecoderChannel()); }

struct LibavcodecDecoder::Stream {
  Codec codec;
  AVCodecID id;
  int rate;  // Hz
  std::size_t packetBytes;
  std::size_t packetSamples;
};

const LibavcodecDecoder::Stream& LibavcodecDecoder::StreamOf(Codec codec) {
  static constexpr Stream kStreams[] = {
      {Codec::kG722, AV_CODEC_ID_ADPCM_G722, 16000, kBlock, 2 * kBlock},
      {Codec::kG723At6300, AV_CODEC_ID_G723_1, 8000, 24, kG723FrameSamples},
      {Codec::kG723At5300, AV_CODEC_ID_G723_1, 8000, 20, kG723FrameSamples},
      {Codec::kG729A, AV_CODEC_ID_G729, 8000, kFrameBytes, kFrameSamples},
  };
  return *std::ranges::find(kStreams, codec, &Stream::codec);
}

LibavcodecDecoder::LibavcodecDecoder(Codec codec) : stream_(StreamOf(codec)) {
  const AVCodec* const decoder = avcodec_find_decoder(stream_.id);
  context_ = avcodec_alloc_context3(decoder);
  context_->sample_rate = stream_.rate;
  av_channel_layout_default(&context_->ch_layout, 1);
  isOpen_ = avcodec_open2(context_, decoder, nullptr) == 0;
  packet_ = av_packet_alloc();
  frame_ = av_frame_alloc();
}

LibavcodecDecoder::~LibavcodecDecoder() {
  av_frame_free(&frame_);
  av_packet_free(&packet_);
  avcodec_free_context(&context_);
}

Samples LibavcodecDecoder::Decode(const Bytes& bytes) {
  Samples samples;
  if (!isOpen_) return samples;
  const std::size_t packetBytes = stream_.packetBytes;
  samples.reserve((bytes.size() / packetBytes + 1) * stream_.packetSamples);
  for (std::size_t i = 0; i < bytes.size(); i += packetBytes) {
    packet_->data = const_cast<unsigned char*>(bytes.data() + i);
    packet_->size = static_cast<int>(std::min(packetBytes, bytes.size() - i));
    if (avcodec_send_packet(context_, packet_) != 0) break;
    if (avcodec_receive_frame(context_, frame_) != 0) break;
    const auto* const begin = reinterpret_cast<const short*>(frame_->data[0]);
    samples.insert(samples.end(), begin, begin + frame_->nb_samples);
  }
  return samples;
}

LibavcodecEncoder::LibavcodecEncoder() {
  const AVCodec* const encoder = avcodec_find_encoder(AV_CODEC_ID_G723_1);
  context_ = avcodec_alloc_context3(encoder);
  context_->sample_rate = 8000;
  context_->sample_fmt = AV_SAMPLE_FMT_S16;
  context_->bit_rate = 6300;
  av_channel_layout_default(&context_->ch_layout, 1);
  isOpen_ = avcodec_open2(context_, encoder, nullptr) == 0;
  packet_ = av_packet_alloc();
  frame_ = av_frame_alloc();
  frame_->format = AV_SAMPLE_FMT_S16;
  frame_->sample_rate = 8000;
  frame_->nb_samples = kG723FrameSamples;
  av_channel_layout_default(&frame_->ch_layout, 1);
  isOpen_ = isOpen_ && av_frame_get_buffer(frame_, 0) == 0;
}

LibavcodecEncoder::~LibavcodecEncoder() {
  av_frame_free(&frame_);
  av_packet_free(&packet_);
  avcodec_free_context(&context_);
}

Bytes LibavcodecEncoder::Encode(const Samples& samples) {
  Bytes bytes;
  if (!isOpen_) return bytes;
  bytes.reserve(samples.size() / 10);
  for (std::size_t i = 0; i + kG723FrameSamples <= samples.size(); i += kG723FrameSamples) {
    if (av_frame_make_writable(frame_) != 0) break;
    std::copy_n(&samples[i], kG723FrameSamples, reinterpret_cast<short*>(frame_->data[0]));
    if (avcodec_send_frame(context_, frame_) != 0) break;
    if (avcodec_receive_packet(context_, packet_) != 0) break;
    bytes.insert(bytes.end(), packet_->data, packet_->data + packet_->size);
    av_packet_unref(packet_);
  }
  return bytes;
}

}  // namespace benchmarks
