// Other libraries' speech codecs. The PCM and the frames are those of whole streams.
#pragma once

#include <cstddef>
#include <vector>

struct AVCodecContext;
struct AVFrame;
struct AVPacket;

namespace benchmarks {

using Bytes = std::vector<unsigned char>;
using Samples = std::vector<short>;

/// Bytes that are decoded at once: whole frames at each of G.722's and G.723.1's rates, and of
/// G.729A.
inline constexpr std::size_t kBlock = 3360;

/// G.722 by libspandsp. @param bitRate  64000, 56000 or 48000 bit/s.
Bytes EncodeSpandsp(int bitRate, const Samples& samples);
Samples DecodeSpandsp(int bitRate, const Bytes& bytes);
void MakeSpandspDecoder();

/// G.729A by libbcg729, whole frames.
Bytes EncodeBcg729(const Samples& samples);
Samples DecodeBcg729(const Bytes& bytes);
void MakeBcg729Decoder();

/// A decoder of libavcodec, kept from stream to stream.
class LibavcodecDecoder {
 public:
  /// G.722 at 64 kbit/s, and G.723.1 at 6.3 or 5.3 kbit/s throughout.
  enum class Codec { kG722, kG723At6300, kG723At5300, kG729A };

  explicit LibavcodecDecoder(Codec codec);
  ~LibavcodecDecoder();
  LibavcodecDecoder(const LibavcodecDecoder&) = delete;
  LibavcodecDecoder& operator=(const LibavcodecDecoder&) = delete;

  /// Empty where libavcodec does not have the codec.
  Samples Decode(const Bytes& bytes);

 private:
  struct Stream;
  static const Stream& StreamOf(Codec codec);

  const Stream& stream_;
  AVCodecContext* context_ = nullptr;
  AVPacket* packet_ = nullptr;
  AVFrame* frame_ = nullptr;
  bool isOpen_ = false;
};

/// Its encoder of G.723.1 at 6.3 kbit/s, kept from stream to stream.
class LibavcodecEncoder {
 public:
  LibavcodecEncoder();
  ~LibavcodecEncoder();
  LibavcodecEncoder(const LibavcodecEncoder&) = delete;
  LibavcodecEncoder& operator=(const LibavcodecEncoder&) = delete;

  /// Whole frames. Empty where libavcodec does not have the codec.
  Bytes Encode(const Samples& samples);

 private:
  AVCodecContext* context_ = nullptr;
  AVPacket* packet_ = nullptr;
  AVFrame* frame_ = nullptr;
  bool isOpen_ = false;
};

}  // namespace benchmarks
