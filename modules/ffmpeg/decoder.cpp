// Decoding the way from a file to its samples that libavformat and libavcodec go together, without
// the file: its bytes are cut into packets by a parser, where the coding has one, or are packets of
// whole blocks as they are.
//
//     source -> chunk_ -> parser_ -> packet_ -> decoder_ -> frame_ -> output
//
// Whatever does not fit the output waits where it is, from the chunk on to the right. Packets that
// cannot be decoded are skipped, as players do, unless there is nothing else: see HasFailed.
#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <new>

#include "modules/ffmpeg/coder.h"
#include "modules/ffmpeg/ffmpeg.h"
#include "modules/ffmpeg/samples.h"
#include "modules/ffmpeg/wave_record.h"

namespace Quorvex::ffmpeg {
namespace {

constexpr std::size_t kUsualChunkBytes = 4096;
// A parser keeps all it is given until it has seen what it looks for.
constexpr std::size_t kLongestSearch = 4 << 20;
// Of a stream, after which something should have been decoded.
constexpr std::size_t kLongestSilence = 64 << 10;
constexpr std::size_t kMostOutputBytes = 4 << 20;

// For a parser there is no codec.
Owner<AVCodecContext> MakeContext(const AVCodec* codec, const AVCodecParameters& parameters) {
  Owner<AVCodecContext> context(avcodec_alloc_context3(codec));
  if (context == nullptr || avcodec_parameters_to_context(context.get(), &parameters) < 0) {
    throw std::bad_alloc();
  }
  context->log_level_offset = kUnheard;
  context->thread_count = 1;
  return context;
}

class Decoder final : public MediaAccessorCoder {
 public:
  // The record makes sense. False when there is no decoder for it. May throw
  // std::bad_alloc.
  bool Open(const MediaAccessorCoding& coding);

  std::size_t OutputBytes(std::size_t sourceBytes) const noexcept override;
  bool Convert(std::span<const unsigned char> source, MediaAccessorConvertExtent extent,
               std::span<unsigned char> output, std::size_t& used,
               std::size_t& produced) noexcept override;

 private:
  enum class Ending { kNotYet, kParser, kDecoder };

  bool NextFrame();
  bool SendPacket();
  bool TakeFromChunk();
  bool TakeFromParser();
  void Send(std::uint8_t* data, int bytes);
  void Note(int error);
  bool FillChunk(std::span<const unsigned char> source);
  bool NextEnding();
  void StartParser();
  void Deliver(std::span<unsigned char> output, std::size_t& produced);
  bool HasFailed(MediaAccessorConvertExtent extent) const;

  std::size_t channels_ = 0;
  std::size_t block_ = 1;       // bytes
  std::size_t chunkBytes_ = 0;  // a multiple of the block
  std::uint32_t frequency_ = 0;
  std::uint32_t averageBytes_ = 0;  // a second
  Owner<AVCodecContext> decoder_;
  Owner<AVCodecParserContext> parser_;  // null: the coding has none
  Owner<AVCodecContext> parserContext_;
  Owner<AVBufferRef> chunk_;
  std::size_t chunkBegin_ = 0;  // what is in the chunk
  std::size_t chunkEnd_ = 0;
  Owner<AVPacket> packet_;
  Owner<AVFrame> frame_;
  std::size_t delivered_ = 0;  // of the frame, in sample frames
  std::size_t searched_ = 0;   // bytes that the parser took since its last packet
  std::size_t taken_ = 0;      // bytes of the stream, up to kLongestSilence
  Ending ending_ = Ending::kNotYet;
  bool hasDecoded_ = false;
  bool isDamaged_ = false;  // some packet was
  bool isBroken_ = false;   // there is no going on
};

bool Decoder::Open(const MediaAccessorCoding& coding) {
  const AVCodecID id = CodecOf(coding);
  const AVCodec* const codec = avcodec_find_decoder(id);
  if (codec == nullptr || codec->type != AVMEDIA_TYPE_AUDIO) return false;
  channels_ = coding.channels;
  frequency_ = coding.samplesPerSecond;
  averageBytes_ = coding.averageBytesPerSecond;
  block_ = std::max(coding.blockAlign, 1U);
  chunkBytes_ = std::max(kUsualChunkBytes - kUsualChunkBytes % block_, block_);

  const Owner<AVCodecParameters> parameters = MakeParameters(coding, id);
  decoder_ = MakeContext(codec, *parameters);
  decoder_->pkt_timebase = {1, static_cast<int>(frequency_)};
  if (avcodec_open2(decoder_.get(), codec, nullptr) < 0) return false;
  parserContext_ = MakeContext(nullptr, *parameters);
  StartParser();
  packet_.reset(av_packet_alloc());
  frame_.reset(av_frame_alloc());
  return packet_ != nullptr && frame_ != nullptr;
}

void Decoder::StartParser() {
  parser_.reset(av_parser_init(decoder_->codec_id));
  searched_ = 0;
}

// What the record says it makes of so many bytes, and some more.
std::size_t Decoder::OutputBytes(std::size_t sourceBytes) const noexcept {
  constexpr std::size_t kSome = 64 << 10;
  if (averageBytes_ == 0) return kMostOutputBytes / 4;
  const double perByte =
      static_cast<double>(frequency_) * static_cast<double>(channels_ * 2) / averageBytes_;
  const double bytes = static_cast<double>(sourceBytes) * perByte;
  return static_cast<std::size_t>(std::min<double>(bytes, kMostOutputBytes - kSome)) + kSome;
}

bool Decoder::Convert(std::span<const unsigned char> source, MediaAccessorConvertExtent extent,
                      std::span<unsigned char> output, std::size_t& used,
                      std::size_t& produced) noexcept {
  used = produced = 0;
  source = source.first(Convertible(source.size(), extent, block_));
  while (!isBroken_) {
    Deliver(output, produced);
    if (delivered_ < static_cast<std::size_t>(frame_->nb_samples)) break;  // the output is full
    if (NextFrame() || SendPacket() || isBroken_) continue;
    if (used < source.size()) {
      const std::size_t bytes = std::min(source.size() - used, chunkBytes_);
      if (FillChunk(source.subspan(used, bytes))) used += bytes;
    } else if (extent != MEDIA_ACCESSOR_CONVERT_END || !NextEnding()) {
      break;
    }
  }
  return !HasFailed(extent);
}

// A stream that nothing at all could be decoded of fails when it ends or has become long, so that a
// damaged beginning is forgiven.
bool Decoder::HasFailed(MediaAccessorConvertExtent extent) const {
  const bool isTime = extent == MEDIA_ACCESSOR_CONVERT_END || taken_ >= kLongestSilence;
  return isBroken_ || (isDamaged_ && !hasDecoded_ && isTime);
}

// Whether there is one; it may be damaged, and empty.
bool Decoder::NextFrame() {
  const int error = avcodec_receive_frame(decoder_.get(), frame_.get());
  delivered_ = 0;
  if (error == AVERROR(EAGAIN) || error == AVERROR_EOF) return false;
  if (error < 0) {
    Note(error);
    return true;
  }
  isBroken_ = !IsConvertible(*frame_) || frame_->sample_rate != static_cast<int>(frequency_);
  hasDecoded_ = hasDecoded_ || frame_->nb_samples > 0;
  return true;
}

// Sends the next packet of what is in the chunk. False when there is none.
bool Decoder::SendPacket() {
  if (ending_ == Ending::kDecoder) return false;
  return parser_ != nullptr ? TakeFromParser() : TakeFromChunk();
}

bool Decoder::TakeFromChunk() {
  if (chunkBegin_ == chunkEnd_) return false;
  std::uint8_t* const data = chunk_->data + chunkBegin_;
  const auto bytes = static_cast<int>(chunkEnd_ - chunkBegin_);
  chunkBegin_ = chunkEnd_;
  Send(data, bytes);
  return true;
}

bool Decoder::TakeFromParser() {
  while (chunkBegin_ < chunkEnd_ || ending_ == Ending::kParser) {
    const bool isEnd = chunkBegin_ == chunkEnd_;
    const std::uint8_t* const data = isEnd ? nullptr : chunk_->data + chunkBegin_;
    std::uint8_t* packet = nullptr;
    int bytes = 0;
    const int taken = av_parser_parse2(parser_.get(), parserContext_.get(), &packet, &bytes, data,
                                       static_cast<int>(chunkEnd_ - chunkBegin_), AV_NOPTS_VALUE,
                                       AV_NOPTS_VALUE, 0);
    chunkBegin_ += static_cast<std::size_t>(std::max(taken, 0));
    if (bytes > 0) {
      searched_ = 0;
      Send(packet, bytes);
      return true;
    }
    if (taken <= 0) chunkBegin_ = chunkEnd_;
    if (isEnd) return false;
    searched_ += static_cast<std::size_t>(std::max(taken, 0));
    if (searched_ > kLongestSearch) {
      isDamaged_ = true;
      StartParser();
      if (parser_ == nullptr) isBroken_ = true;
    }
  }
  return false;
}

// What is in the chunk is lent; what is in the parser, the decoder copies.
void Decoder::Send(std::uint8_t* data, int bytes) {
  const bool isInChunk =
      chunk_ != nullptr && data >= chunk_->data && data < chunk_->data + chunk_->size;
  packet_->buf = isInChunk ? chunk_.get() : nullptr;
  packet_->data = data;
  packet_->size = bytes;
  const int error = avcodec_send_packet(decoder_.get(), packet_.get());
  packet_->buf = nullptr;
  packet_->data = nullptr;
  packet_->size = 0;
  if (error < 0) Note(error);
}

void Decoder::Note(int error) {
  isDamaged_ = true;
  isBroken_ = isBroken_ || error == AVERROR(ENOMEM);
}

bool Decoder::FillChunk(std::span<const unsigned char> source) {
  // The decoder should have done with it.
  if (chunk_ == nullptr || av_buffer_is_writable(chunk_.get()) == 0) {
    chunk_.reset(av_buffer_allocz(chunkBytes_ + AV_INPUT_BUFFER_PADDING_SIZE));
  }
  if (chunk_ == nullptr) {
    isBroken_ = true;
    return false;
  }
  std::memcpy(chunk_->data, source.data(), source.size());
  std::memset(chunk_->data + source.size(), 0, AV_INPUT_BUFFER_PADDING_SIZE);
  chunkBegin_ = 0;
  chunkEnd_ = source.size();
  taken_ = std::min(taken_ + source.size(), kLongestSilence);
  return true;
}

// Lets the parser, then the decoder, know that nothing follows. False when both do.
bool Decoder::NextEnding() {
  if (ending_ == Ending::kDecoder) return false;
  if (ending_ == Ending::kNotYet && parser_ != nullptr) {
    ending_ = Ending::kParser;
    return true;
  }
  ending_ = Ending::kDecoder;
  const int error = avcodec_send_packet(decoder_.get(), nullptr);
  if (error < 0) Note(error);
  return true;
}

// As much of the frame as there is room for.
void Decoder::Deliver(std::span<unsigned char> output, std::size_t& produced) {
  const std::size_t frameBytes = channels_ * sizeof(short);
  const std::size_t count = std::min(static_cast<std::size_t>(frame_->nb_samples) - delivered_,
                                     (output.size() - produced) / frameBytes);
  if (count == 0) return;
  auto* const samples = reinterpret_cast<short*>(output.data() + produced);
  ConvertSamples(*frame_, delivered_, count, channels_, samples);
  delivered_ += count;
  produced += count * frameBytes;
}

}  // namespace

std::unique_ptr<MediaAccessorCoder> OpenDecoder(const MediaAccessorCoding& source) {
  if (!MakesSense(source)) return nullptr;
  auto decoder = std::make_unique<Decoder>();
  return decoder->Open(source) ? std::move(decoder) : nullptr;
}

}  // namespace Quorvex::ffmpeg
