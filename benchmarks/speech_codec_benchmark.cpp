// The speech codecs beside libspandsp, libbcg729 and libavcodec. What is timed is compared first:
// the program fails when the PCM of G.722 and of G.723.1 is not the same in all of them, or when
// that of G.729A, which the others do not decode exactly, is not nearly the same.
//
// With the environment's CODEC_VECTORS, a folder of conformance vectors, G.722.1 is timed as well;
// no other library decodes it, so G.722 of libavcodec is what it is measured by. In the same way
// nothing else encodes G.723.1 at 5.3 kbit/s, which is measured by libavcodec's 6.3 kbit/s.
#include <MediaAccessor/all.h>
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
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
#include "benchmarks/speech_codec_peers.h"
#include "codecs/engine.h"
#include "tests/likeness.h"

namespace {

using namespace Quorvex;
using benchmarks::Bytes;
using benchmarks::kBlock;
using benchmarks::LibavcodecDecoder;
using benchmarks::LibavcodecEncoder;
using benchmarks::Samples;

using AvCodec = LibavcodecDecoder::Codec;

template <class Element>
class Collector final : public CMediaSink {
 public:
  explicit Collector(std::vector<Element>& elements) : elements_(elements) {}
  QVERRORCODE_TAG SetChannelCount(int) override { return QVERR_OK; }
  QVERRORCODE_TAG Write(const void* data, unsigned long count) override {
    const auto* const begin = static_cast<const Element*>(data);
    elements_.insert(elements_.end(), begin, begin + count);
    return QVERR_OK;
  }

 private:
  std::vector<Element>& elements_;
};

// What libspandsp makes of 4 s of noise.
Bytes CodedNoise(int bitRate) {
  return benchmarks::EncodeSpandsp(bitRate, benchmarks::Noise(std::size_t{4} * 16000, 8000));
}

// The caller of the bundled recording, and then the agent.
Samples Speech() {
  Samples speech;
  for (const int side : {0, 1}) {
    MediaFilePtr file;
    if (MediaFileOpen(RECORDINGS "/call.wav", file) != QVERR_OK) return {};
    file->SelectChannel(side);
    const short* samples = nullptr;
    unsigned long frames = 0;
    while (file->ReadBlock(samples, frames) == QVERR_OK && frames > 0) {
      speech.insert(speech.end(), samples, samples + frames);
    }
  }
  return speech;
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

Bytes EncodeOurs(IPPEncoder& encoder, const Samples& samples) {
  Bytes bytes;
  bytes.reserve(samples.size());
  Collector collector(bytes);
  encoder.Reset();
  encoder.SetSink(&collector);
  for (std::size_t i = 0; i < samples.size(); i += kBlock) {
    const std::size_t count = std::min(kBlock, samples.size() - i);
    encoder.Write(samples.data() + i, static_cast<unsigned long>(count));
  }
  return bytes;
}

std::shared_ptr<IPPDecoder> MakeDecoder(IPPCoder::CODEC codec, long bitRate) {
  return {IPPDecoder::CreateInstance(codec, bitRate), ObjectReleaser()};
}

std::shared_ptr<IPPEncoder> MakeEncoder(IPPCoder::CODEC codec) {
  return {IPPEncoder::CreateInstance(codec), ObjectReleaser()};
}

void AddOurs(const std::string& job, IPPCoder::CODEC codec, long bitRate, const Bytes& bytes) {
  const std::shared_ptr<IPPDecoder> decoder = MakeDecoder(codec, bitRate);
  benchmarks::Add(job, "ours", "sample", [=] {
    return static_cast<unsigned long long>(DecodeOurs(*decoder, bytes).size());
  });
}

void AddLibavcodec(const std::string& job, const std::string& who, AvCodec codec,
                   const Bytes& bytes) {
  const auto decoder = std::make_shared<LibavcodecDecoder>(codec);
  benchmarks::Add(job, who, "sample",
                  [=] { return static_cast<unsigned long long>(decoder->Decode(bytes).size()); });
}

// libspandsp keeps the last code word of a stream to itself where it does not begin a byte.
bool AreEqual(const Samples& ours, const Samples& peers) {
  return peers.size() + 2 >= ours.size() && peers.size() <= ours.size() &&
         std::equal(peers.begin(), peers.end(), ours.begin());
}

bool AddG722(int bitRate) {
  const Bytes bytes = CodedNoise(bitRate);
  const std::string job = "G.722 decoding at " + std::to_string(bitRate) + " bit/s";
  const Samples peers = benchmarks::DecodeSpandsp(bitRate, bytes);
  const auto decoder = MakeDecoder(IPPCoder::G722, bitRate);
  const Samples ours = DecodeOurs(*decoder, bytes);
  if (!AreEqual(ours, peers) ||
      (bitRate == 64000 && !AreEqual(ours, LibavcodecDecoder(AvCodec::kG722).Decode(bytes)))) {
    std::fprintf(stderr, "%s: the decoders do not agree\n", job.c_str());
    return false;
  }
  AddOurs(job, IPPCoder::G722, bitRate, bytes);
  if (bitRate == 64000) AddLibavcodec(job, "libavcodec", AvCodec::kG722, bytes);
  benchmarks::Add(job, "libspandsp", "sample", [=] {
    return static_cast<unsigned long long>(benchmarks::DecodeSpandsp(bitRate, bytes).size());
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
  AddLibavcodec(job, "its G.722", AvCodec::kG722, CodedNoise(64000));
}

// How much louder one is than the other.
double Decibels(const Samples& samples, const Samples& others) {
  return 20 * std::log10(tests::Level(samples) / tests::Level(others));
}

// The frames of either encoder have to be as near to the speech, heard through the same decoder,
// and those of ours have to sound the same through either decoder.
bool IsG729ARight(const Samples& speech, const Bytes& frames) {
  constexpr std::size_t kLookAhead = 40;  // samples by which the codec delays
  const Samples peers = benchmarks::DecodeBcg729(frames);
  const Samples ours = DecodeOurs(*MakeDecoder(IPPCoder::G729A, 0), frames);
  const Samples peersAlone = benchmarks::DecodeBcg729(benchmarks::EncodeBcg729(speech));
  const double decoders = tests::Correlation(peers, ours);
  const double decodersLevel = Decibels(ours, peers);
  const double encoder = tests::Correlation(speech, peers, kLookAhead);
  const double peersEncoder = tests::Correlation(speech, peersAlone, kLookAhead);
  const double encodersLevel = Decibels(peers, peersAlone);
  std::printf(
      "G.729A, decoders: correlation %.4f, level %+.2f dB; encoders: correlation with the speech "
      "%.3f, libbcg729's %.3f, level %+.2f dB\n",
      decoders, decodersLevel, encoder, peersEncoder, encodersLevel);
  return ours.size() == speech.size() && decoders > 0.998 && std::abs(decodersLevel) < 0.1 &&
         encoder > peersEncoder - 0.02 && std::abs(encodersLevel) < 0.5;
}

bool AddG729A() {
  const Samples speech = Speech();
  const auto encoder = MakeEncoder(IPPCoder::G729A);
  const Bytes frames = encoder != nullptr ? EncodeOurs(*encoder, speech) : Bytes();
  if (frames.empty() || !IsG729ARight(speech, frames)) {
    std::fprintf(stderr, "G.729A: too far from libbcg729\n");
    return false;
  }
  const std::string decoding = "G.729A decoding";
  AddOurs(decoding, IPPCoder::G729A, 0, frames);
  benchmarks::Add(decoding, "libbcg729", "sample", [=] {
    return static_cast<unsigned long long>(benchmarks::DecodeBcg729(frames).size());
  });
  AddLibavcodec(decoding, "libavcodec", AvCodec::kG729A, frames);
  const std::string encoding = "G.729A encoding";
  benchmarks::Add(encoding, "ours", "sample",
                  [=] { return EncodeOurs(*encoder, speech).empty() ? 0ULL : speech.size(); });
  benchmarks::Add(encoding, "libbcg729", "sample",
                  [=] { return benchmarks::EncodeBcg729(speech).empty() ? 0ULL : speech.size(); });
  return true;
}

struct G7231Rate {
  const char* name;
  IPPCoder::CODEC codec;
  AvCodec peer;
  const char* peersEncoder;  // libavcodec's
};
constexpr G7231Rate kG7231Rates[] = {
    {"G.723.1 at 6300 bit/s", IPPCoder::G723_1_63, AvCodec::kG723At6300, "libavcodec"},
    {"G.723.1 at 5300 bit/s", IPPCoder::G723_1_53, AvCodec::kG723At5300, "its 6300 bit/s"},
};

// The same samples as libavcodec's from our frames, and those as near to the speech as its own.
bool IsG7231Right(const Samples& speech, const Bytes& frames, const G7231Rate& rate) {
  constexpr std::size_t kLookAhead = 60;  // samples by which the codec delays
  const Samples ours = DecodeOurs(*MakeDecoder(rate.codec, 0), frames);
  const Samples peers =
      LibavcodecDecoder(AvCodec::kG723At6300).Decode(LibavcodecEncoder().Encode(speech));
  const double encoder = tests::Correlation(speech, ours, kLookAhead);
  const double peersEncoder = tests::Correlation(speech, peers, kLookAhead);
  const double encodersLevel = Decibels(ours, peers);
  std::printf(
      "%s, encoders: correlation with the speech %.3f, that of libavcodec's at 6300 bit/s %.3f, "
      "level %+.2f dB\n",
      rate.name, encoder, peersEncoder, encodersLevel);
  return ours.size() == speech.size() && ours == LibavcodecDecoder(rate.peer).Decode(frames) &&
         encoder > peersEncoder - 0.03 && std::abs(encodersLevel) < 0.5;
}

bool AddG7231(const G7231Rate& rate) {
  const Samples speech = Speech();
  const auto encoder = MakeEncoder(rate.codec);
  const Bytes frames = encoder != nullptr ? EncodeOurs(*encoder, speech) : Bytes();
  if (frames.empty() || !IsG7231Right(speech, frames, rate)) {
    std::fprintf(stderr, "%s: not as libavcodec decodes, or too far from it\n", rate.name);
    return false;
  }
  const std::string decoding = rate.name + std::string(", decoding");
  AddOurs(decoding, rate.codec, 0, frames);
  AddLibavcodec(decoding, "libavcodec", rate.peer, frames);
  const std::string encoding = rate.name + std::string(", encoding");
  benchmarks::Add(encoding, "ours", "sample",
                  [=] { return EncodeOurs(*encoder, speech).empty() ? 0ULL : speech.size(); });
  const auto peer = std::make_shared<LibavcodecEncoder>();
  benchmarks::Add(encoding, rate.peersEncoder, "sample",
                  [=] { return peer->Encode(speech).empty() ? 0ULL : speech.size(); });
  return true;
}

void AddCreation() {
  const std::string job = "making a decoder";
  const struct {
    const char* who;
    IPPCoder::CODEC codec;
    long bitRate;
  } ours[] = {{"ours, G.722", IPPCoder::G722, 64000},
              {"ours, G.722.1", IPPCoder::G722_1, 24000},
              {"ours, G.723.1", IPPCoder::G723_1_63, 0},
              {"ours, G.729A", IPPCoder::G729A, 0}};
  for (const auto& [who, codec, bitRate] : ours) {
    benchmarks::Add(job, who, "decoder", [codec = codec, bitRate = bitRate] {
      return static_cast<unsigned long long>(MakeDecoder(codec, bitRate) != nullptr);
    });
  }
  benchmarks::Add(job, "libspandsp", "decoder", [] {
    benchmarks::MakeSpandspDecoder();
    return 1ULL;
  });
  benchmarks::Add(job, "libbcg729", "decoder", [] {
    benchmarks::MakeBcg729Decoder();
    return 1ULL;
  });
  benchmarks::Add(job, "libavcodec", "decoder", [] {
    const LibavcodecDecoder decoder(AvCodec::kG722);
    return 1ULL;
  });
}

void PrintMemory() {
  const struct {
    const char* engine;
    const char* who;
    EngineDirection direction;
  } coders[] = {{"IPP_G722", "decoder", EngineDirection::kDecode},
                {"IPP_G722.1", "decoder", EngineDirection::kDecode},
                {"IPP_G723.1", "decoder", EngineDirection::kDecode},
                {"IPP_G723.1", "encoder", EngineDirection::kEncode},
                {"IPP_G729A", "decoder", EngineDirection::kDecode},
                {"IPP_G729A", "encoder", EngineDirection::kEncode}};
  for (const auto& [name, who, direction] : coders) {
    const SpeechEngine* const engine = FindSpeechEngine(name);
    const EngineOptions options{.direction = direction, .modes = {}};
    std::vector<MemoryBank> banks(static_cast<std::size_t>(engine->BankCount(options)));
    engine->BankSizes(options, banks.data());
    std::size_t bytes = 0;
    for (const MemoryBank& bank : banks) bytes += bank.bytes;
    std::printf("%-10s %s: %zu bytes\n", name, who, bytes);
  }
}

}  // namespace

int main(int argc, char** argv) {
  for (const int bitRate : {64000, 56000, 48000}) {
    if (!AddG722(bitRate)) return EXIT_FAILURE;
  }
  AddG7221();
  for (const G7231Rate& rate : kG7231Rates) {
    if (!AddG7231(rate)) return EXIT_FAILURE;
  }
  if (!AddG729A()) return EXIT_FAILURE;
  AddCreation();
  PrintMemory();
  return benchmarks::RunAll(argc, argv);
}
