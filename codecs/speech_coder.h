// SpeechCoder: one coder of an engine with the memory it works in, and the layout of its frames.
// What the decoder and the encoder of the wrapper have in common.
#pragma once

#include <MediaAccessor/ipp_coder.h>
#include <MediaAccessor/ipp_decoder.h>
#include <MediaAccessor/ipp_encoder.h>

#include <cstddef>

#include "codecs/engine.h"
#include "support/cft_array.h"

namespace Quorvex {

/// What is known of a codec before its engine is asked.
struct SpeechCodec {
  IPPCoder::CODEC codec;
  const char* engine;   // the name of its table
  long bitRate;         // bit/s; 0: the caller's
  int frameBytes;       // 0: computed
  bool skipsFirstByte;  // of a frame
  bool isCoded;         // there is an encoder
};

/// A codec's engine; null, with a line in the log, for a number that is no codec, or when there is
/// none in this build.
const SpeechEngine* FindSpeechEngine(IPPCoder::CODEC codec) noexcept;

class SpeechCoder {
 public:
  SpeechCoder() = default;
  ~SpeechCoder() { Release(); }
  SpeechCoder(const SpeechCoder&) = delete;
  SpeechCoder& operator=(const SpeechCoder&) = delete;

  /// Makes the coder. To be called once.
  /// @param bitRate  bit/s, for codecs that leave it to the caller; 0 stands for 64,000.
  /// @param engine   the codec's; null when there is none.
  /// @return false when there is no such codec, direction or bit rate, or no memory; nothing is
  ///         held then.
  bool Initialize(IPPCoder::CODEC codec, long bitRate, EngineDirection direction,
                  const SpeechEngine* engine) noexcept;

  /// Begins a new stream. True also when there is no coder.
  bool Reset() noexcept;

  IPPCoder::CODEC Codec() const noexcept;  // 0 until initialised
  int SamplingFrequency() const noexcept;  // Hz; 0 until initialised
  std::size_t FrameBytes() const noexcept { return frameBytes_; }
  /// Bytes at the beginning of a frame that are not the engine's.
  std::size_t SkippedBytes() const noexcept { return codec_->skipsFirstByte ? 1 : 0; }
  std::size_t FrameSamples() const noexcept { return frameSamples_; }
  /// The largest frame that the engine makes, and what is before it.
  std::size_t MostFrameBytes() const noexcept;

  /// As the engine's, for FrameBytes bytes: a frame with its skipped byte, and what fills up one
  /// that tells to be shorter.
  bool Decode(const unsigned char* frame, short* samples) noexcept;
  /// The skipped byte is 0. @param bytes  receives the frame's length.
  bool Encode(const short* samples, unsigned char* frame, std::size_t& bytes) noexcept;

 private:
  bool MakeCoder(long bitRate, EngineDirection direction) noexcept;
  bool ReadInfo() noexcept;
  bool AllocateBanks() noexcept;
  void Release() noexcept;
  const EngineInfo& Info() const noexcept;

  const SpeechCodec* codec_ = nullptr;
  const SpeechEngine* engine_ = nullptr;
  CFTarray<unsigned char> info_;
  EngineOptions options_;
  Allocator& allocator_ = CurrentAllocator();  // of the banks
  CFTarray<MemoryBank> banks_;
  EngineHandle* handle_ = nullptr;
  std::size_t frameBytes_ = 0;
  std::size_t frameSamples_ = 0;
};

/// A decoder and an encoder over an engine, by ipp_decoder.cpp and ipp_encoder.cpp. Null when
/// SpeechCoder::Initialize fails.
IPPDecoder* MakeDecoder(IPPCoder::CODEC codec, long bitRate, const SpeechEngine* engine) noexcept;
IPPEncoder* MakeEncoder(IPPCoder::CODEC codec, const SpeechEngine* engine) noexcept;

}  // namespace Quorvex
