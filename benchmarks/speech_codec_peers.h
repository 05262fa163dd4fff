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

/// Bytes that are decoded at once: whole frames at each of G.722's rates, and of G.729A.
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
  enum class Codec { kG722, kG729A };  ///< G.722 at 64 kbit/s

  explicit LibavcodecDecoder(Codec codec);
  ~LibavcodecDecoder();
  LibavcodecDecoder(const LibavcodecDecoder&) = delete;
  LibavcodecDecoder& operator=(const LibavcodecDecoder&) = delete;

  /// Empty where libavcodec does not have the codec.
  Samples Decode(const Bytes& bytes);

 private:
  std::size_t packetBytes_;
  AVCodecContext* context_ = nullptr;
  AVPacket* packet_ = nullptr;
  AVFrame* frame_ = nullptr;
  bool isOpen_ = false;
};

}  // namespace benchmarks
