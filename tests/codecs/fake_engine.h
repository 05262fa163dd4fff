// Engines with the sizes of real ones that write down what they are given, and a sink that keeps
// each push.
#pragma once

#include <MediaAccessor/ipp_coder.h>
#include <MediaAccessor/media_sink.h>

#include <algorithm>
#include <vector>

#include "codecs/engines/engine_functions.h"

namespace tests {

/// What the fake engines were given; to be cleared by whoever uses them.
struct EngineRecord {
  std::vector<std::vector<unsigned char>> decoded;
  std::vector<std::vector<short>> encoded;
  Quorvex::EngineModes modes;  // of the last start
  int starts = 0;              // creation is one
};
inline EngineRecord engineRecord;

/// The first byte of a frame that no fake engine decodes.
inline constexpr unsigned char kBadFrame = 0xFF;

template <int kHertz, int kSamples, int kMostBytes, int... kRates>
struct FakeCodec {
  static constexpr Quorvex::EngineInfo kInfo = {"fake", kHertz, 16, 2 * kSamples, kMostBytes, 0};
  static constexpr int kBitRates[] = {kRates...};
  static std::size_t FrameBytes(int bitRate, unsigned char first) noexcept {
    return first == kBadFrame ? 0 : static_cast<std::size_t>(bitRate * kSamples / kHertz + 7) / 8;
  }
  struct Decoder {
    void Start(const Quorvex::EngineModes& modes) {
      engineRecord.modes = modes;
      ++engineRecord.starts;
    }
    void SetModes(const Quorvex::EngineModes&) {}
    int BitRate() const { return engineRecord.modes.bitRate; }
    // Samples that are all 100 times the first byte.
    void Decode(const Quorvex::CodedFrame& frame, short* samples) {
      engineRecord.decoded.emplace_back(frame.data, frame.data + frame.bytes);
      std::fill_n(samples, kSamples, static_cast<short>(frame.data[0] * 100));
    }
  };
  struct Encoder : Decoder {
    // Bytes that are all those of the first sample.
    std::size_t Encode(const short* samples, unsigned char* data) {
      engineRecord.encoded.emplace_back(samples, samples + kSamples);
      const std::size_t bytes = FrameBytes(this->BitRate(), 0);
      std::fill_n(data, bytes, static_cast<unsigned char>(samples[0]));
      return bytes;
    }
  };
};

inline constexpr auto kFakeG729A = Quorvex::MakeSpeechEngine<FakeCodec<8000, 80, 10, 8000>>();
inline constexpr auto kFakeG723 = Quorvex::MakeSpeechEngine<FakeCodec<8000, 240, 24, 5300, 6300>>();
inline constexpr auto kFakeG722 =
    Quorvex::MakeSpeechEngine<FakeCodec<16000, 160, 80, 48000, 56000, 64000>>();

/// The one with the sizes of a codec's.
inline const Quorvex::SpeechEngine* FakeEngineOf(Quorvex::IPPCoder::CODEC codec) {
  using Quorvex::IPPCoder;
  if (codec <= IPPCoder::G729A_HEADERED) return &kFakeG729A;
  return codec <= IPPCoder::G723_1_63 ? &kFakeG723 : &kFakeG722;
}

/// Keeps what it is pushed, counted in elements of a type.
template <class Element>
struct PushSink : Quorvex::CMediaSink {
  Quorvex::QVERRORCODE_TAG SetChannelCount(int) override { return Quorvex::QVERR_OK; }
  Quorvex::QVERRORCODE_TAG Write(const void* data, unsigned long count) override {
    const auto* const first = static_cast<const Element*>(data);
    pushes.emplace_back(first, first + count);
    if (throws) throw pushes.size();
    return pushes.size() == refused ? Quorvex::QVERR_FILE_IO : Quorvex::QVERR_OK;
  }

  std::vector<std::vector<Element>> pushes;
  std::size_t refused = 0;  // the push, from 1
  bool throws = false;
};

}  // namespace tests
