// The speech codecs beside libspandsp and libavcodec. What is timed is compared first: the program
// fails when the PCM of G.722 is not the same in all of them.
//
// With the environment's CODEC_VECTORS, a folder of conformance vectors, G.722.1 is timed as well;
// no other library decodes it, so G.722 of libavcodec is what it is measured by.
#include <MediaAccessor/ownership.h>
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "benchmarks/comparison.h"
#include "benchmarks/noise.h"

extern "C" {
#include <libavcodec/avcodec.h>
}
#include <spandsp.h>

namespace {

using namespace Quorvex;

using Bytes = std::vector<unsigned char>;
using Samples = std::vector<short>;

constexpr int kSeconds = 4;
constexpr int kFrequency = 16000;     // Hz
constexpr std::size_t kBlock = 3360;  // bytes: whole frames at each of G.722's rates

class Collector final : public CMediaSink {
 public:
  explicit Collector(Samples& samples) : samples_(samples) {}
  QVERRORCODE_TAG SetChannelCount(int) override { return QVERR_OK; }
  QVERRORCODE_TAG Write(const void* data, unsigned long count) override {
    const auto* const begin = static_cast<const short*>(data);
    samples_.insert(samples_.end(), begin, begin + count);
    return QVERR_OK;
  }

 private:
  Samples& samples_;
};

// What libspandsp makes of noise.
Bytes Encode(int bitRate) {
  const Samples noise = benchmarks::Noise(std::size_t{kSeconds} * kFrequency, 8000);
  g722_encode_state_t* const state = g722_encode_init(nullptr, bitRate, G722_PACKED);
  Bytes bytes(noise.size());
  bytes.resize(static_cast<std::size_t>(
      g722_encode(state, bytes.data(), noise.data(), static_cast<int>(noise.size()))));
  g722_encode_free(state);
  return bytes;
}

Samples DecodeOurs(IPPDecoder& decoder, const Bytes& bytes) {
  Samples samples;
  samples.reserve(decoder.SamplesForBytes(static_cast<std::uint32_t>(bytes.size())));
  Collector collector(samples);
  decoder.Reset();
  decoder.SetSink(&collector);
  for (std::size_t i = 0; i < bytes.size(); i += kBlock) {
    const std::size_t count = std::min(kBlock, bytes.size() - i);
    decoder.Decode(bytes.data() + i, static_cast<std::uint32_t>(count));
  }
  return samples;
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

// At 64 kbit/s.
class LibavcodecDecoder {
 public:
  LibavcodecDecoder() {
    const AVCodec* const codec = avcodec_find_decoder(AV_CODEC_ID_ADPCM_G722);
    context_ = avcodec_alloc_context3(codec);
    context_->sample_rate = kFrequency;
    av_channel_layout_default(&context_->ch_layout, 1);
    isOpen_ = avcodec_open2(context_, codec, nullptr) == 0;
    packet_ = av_packet_alloc();
    frame_ = av_frame_alloc();
  }
  ~LibavcodecDecoder() {
    av_frame_free(&frame_);
    av_packet_free(&packet_);
    avcodec_free_context(&context_);
  }
  LibavcodecDecoder(const LibavcodecDecoder&) = delete;
  LibavcodecDecoder& operator=(const LibavcodecDecoder&) = delete;

  Samples Decode(const Bytes& bytes) {
    Samples samples;
    if (!isOpen_) return samples;
    samples.reserve(bytes.size() * 2);
    for (std::size_t i = 0; i < bytes.size(); i += kBlock) {
      packet_->data = const_cast<unsigned char*>(bytes.data() + i);
      packet_->size = static_cast<int>(std::min(kBlock, bytes.size() - i));
      if (avcodec_send_packet(context_, packet_) != 0) break;
      if (avcodec_receive_frame(context_, frame_) != 0) break;
      const auto* const begin = reinterpret_cast<const short*>(frame_->data[0]);
      samples.insert(samples.end(), begin, begin + frame_->nb_samples);
    }
    return samples;
  }

 private:
  AVCodecContext* context_ = nullptr;
  AVPacket* packet_ = nullptr;
  AVFrame* frame_ = nullptr;
  bool isOpen_ = false;
};

std::shared_ptr<IPPDecoder> MakeDecoder(IPPCoder::CODEC codec, long bitRate) {
  return {IPPDecoder::CreateInstance(codec, bitRate), ObjectReleaser()};
}

void AddOurs(const std::string& job, IPPCoder::CODEC codec, long bitRate, const Bytes& bytes) {
  const std::shared_ptr<IPPDecoder> decoder = MakeDecoder(codec, bitRate);
  benchmarks::Add(job, "ours", "sample", [=] {
    return static_cast<unsigned long long>(DecodeOurs(*decoder, bytes).size());
  });
}

void AddLibavcodec(const std::string& job, const std::string& who, const Bytes& bytes) {
  const auto decoder = std::make_shared<LibavcodecDecoder>();
  benchmarks::Add(job, who, "sample",
                  [=] { return static_cast<unsigned long long>(decoder->Decode(bytes).size()); });
}

// libspandsp keeps the last code word of a stream to itself where it does not begin a byte.
bool AreEqual(const Samples& ours, const Samples& peers) {
  return peers.size() + 2 >= ours.size() && peers.size() <= ours.size() &&
         std::equal(peers.begin(), peers.end(), ours.begin());
}

bool AddG722(int bitRate) {
  const Bytes bytes = Encode(bitRate);
  const std::string job = "G.722 decoding at " + std::to_string(bitRate) + " bit/s";
  const Samples peers = DecodeSpandsp(bitRate, bytes);
  const auto decoder = MakeDecoder(IPPCoder::G722, bitRate);
  const Samples ours = DecodeOurs(*decoder, bytes);
  if (!AreEqual(ours, peers) ||
      (bitRate == 64000 && !AreEqual(ours, LibavcodecDecoder().Decode(bytes)))) {
    std::fprintf(stderr, "%s: the decoders do not agree\n", job.c_str());
    return false;
  }
  AddOurs(job, IPPCoder::G722, bitRate, bytes);
  if (bitRate == 64000) AddLibavcodec(job, "libavcodec", bytes);
  benchmarks::Add(job, "libspandsp", "sample", [=] {
    return static_cast<unsigned long long>(DecodeSpandsp(bitRate, bytes).size());
  });
  return true;
}

void AddG7221() {
  const char* const vectors = std::getenv("CODEC_VECTORS");
  if (vectors == nullptr) return;
  const std::filesystem::path folder = std::filesystem::path(vectors) / "g722_1";
  std::ifstream stream(folder / "clean-24000.g7221", std::ios::binary);
  const Bytes bytes{std::istreambuf_iterator<char>(stream), {}};
  if (bytes.empty() || MakeDecoder(IPPCoder::G722_1, 24000) == nullptr) return;
  const std::string job = "G.722.1 decoding at 24000 bit/s";
  AddOurs(job, IPPCoder::G722_1, 24000, bytes);
  AddLibavcodec(job, "its G.722", Encode(64000));
}

void AddCreation() {
  const std::string job = "making a decoder";
  benchmarks::Add(job, "ours, G.722", "decoder", [] {
    return static_cast<unsigned long long>(MakeDecoder(IPPCoder::G722, 64000) != nullptr);
  });
  benchmarks::Add(job, "ours, G.722.1", "decoder", [] {
    return static_cast<unsigned long long>(MakeDecoder(IPPCoder::G722_1, 24000) != nullptr);
  });
  benchmarks::Add(job, "libspandsp", "decoder", [] {
    g722_decode_state_t* const state = g722_decode_init(nullptr, 64000, G722_PACKED);
    g722_decode_free(state);
    return 1ULL;
  });
  benchmarks::Add(job, "libavcodec", "decoder", [] {
    const LibavcodecDecoder decoder;
    return 1ULL;
  });
}

}  // namespace

int main(int argc, char** argv) {
  for (const int bitRate : {64000, 56000, 48000}) {
    if (!AddG722(bitRate)) return EXIT_FAILURE;
  }
  AddG7221();
  AddCreation();
  return benchmarks::RunAll(argc, argv);
}
