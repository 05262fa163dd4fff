// MakeSpeechEngine: the function table of a codec, made of its coder classes.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <new>
#include <type_traits>

#include "codecs/engine.h"

struct Quorvex::EngineHandle {
  EngineDirection direction;
};

namespace Quorvex {

/// Stands for the coder that a codec does not have.
struct NoCoder {
  void Start(const EngineModes&) noexcept {}
  void SetModes(const EngineModes&) noexcept {}
};

/// Functions over a codec class:
///
///     static constexpr EngineInfo kInfo             without the number of bit rates
///     static constexpr int kBitRates[]              in rising order
///     using Decoder
///     using Encoder                                 or NoCoder
///     static std::size_t FrameBytes(int bitRate, unsigned char firstByte)
///
/// and its coders, which hold no resource and live in one bank:
///
///     void Start(const EngineModes&)                at the beginning of a stream
///     void SetModes(const EngineModes&)             within it
///     int BitRate() const                           of the decoder, as it was set last
///     void Decode(const CodedFrame&, short* samples)         of the right size, or erased
///     std::size_t Encode(const short* samples, unsigned char* data)
template <class Codec>
class EngineFunctions {
  template <class Coder>
  struct State : EngineHandle {
    Coder coder;
  };
  using DecoderState = State<typename Codec::Decoder>;
  using EncoderState = State<typename Codec::Encoder>;
  static constexpr bool kHasEncoder = !std::is_same_v<typename Codec::Encoder, NoCoder>;

  static_assert(std::is_trivially_destructible_v<DecoderState> &&
                std::is_trivially_destructible_v<EncoderState>);
  static_assert(alignof(DecoderState) <= alignof(std::max_align_t) &&
                alignof(EncoderState) <= alignof(std::max_align_t));

 public:
  static std::size_t InfoBytes() noexcept { return sizeof(EngineInfo) + sizeof Codec::kBitRates; }

  static void Info(EngineInfo* info) noexcept {
    *info = Codec::kInfo;
    info->bitRateCount = static_cast<int>(std::size(Codec::kBitRates));
    std::memcpy(info + 1, Codec::kBitRates, sizeof Codec::kBitRates);
  }

  static int BankCount(const EngineOptions&) noexcept { return 1; }

  static void BankSizes(const EngineOptions& options, MemoryBank* banks) noexcept {
    const bool decodes = options.direction == EngineDirection::kDecode;
    banks->alignment = decodes ? alignof(DecoderState) : alignof(EncoderState);
    banks->bytes = decodes ? sizeof(DecoderState) : sizeof(EncoderState);
  }

  static EngineStatus Initialize(const EngineOptions& options, const MemoryBank* banks,
                                 EngineHandle** handle) noexcept {
    *handle = nullptr;
    const bool decodes = options.direction == EngineDirection::kDecode;
    if (options.law != EngineLaw::kLinear) return EngineStatus::kNotSupported;
    if (!decodes && !kHasEncoder) return EngineStatus::kNotSupported;
    if (!HasBitRate(options.modes.bitRate)) return EngineStatus::kBadArgument;
    EngineHandle* made = nullptr;
    if (decodes) {
      made = new (banks->memory) DecoderState;
    } else {
      made = new (banks->memory) EncoderState;
    }
    made->direction = options.direction;
    *handle = made;
    return Reinitialize(options.modes, made);
  }

  static EngineStatus Reinitialize(const EngineModes& modes, EngineHandle* handle) noexcept {
    if (!HasBitRate(modes.bitRate)) return EngineStatus::kBadArgument;
    Visit(handle, [&modes](auto& coder) { coder.Start(modes); });
    return EngineStatus::kOk;
  }

  static EngineStatus Control(const EngineModes& modes, EngineHandle* handle) noexcept {
    if (!HasBitRate(modes.bitRate)) return EngineStatus::kBadArgument;
    Visit(handle, [&modes](auto& coder) { coder.SetModes(modes); });
    return EngineStatus::kOk;
  }

  static EngineStatus Encode(EngineHandle* handle, const short* samples, unsigned char* data,
                             std::size_t* bytes) noexcept {
    if (handle->direction != EngineDirection::kEncode) return EngineStatus::kBadArgument;
    if constexpr (kHasEncoder) {
      *bytes = static_cast<EncoderState*>(handle)->coder.Encode(samples, data);
    }
    return kHasEncoder ? EngineStatus::kOk : EngineStatus::kNotSupported;
  }

  static EngineStatus Decode(EngineHandle* handle, const CodedFrame& frame,
                             short* samples) noexcept {
    if (handle->direction != EngineDirection::kDecode) return EngineStatus::kBadArgument;
    auto& decoder = static_cast<DecoderState*>(handle)->coder;
    if (!frame.isErased) {
      if (frame.bytes == 0) return EngineStatus::kBadFrame;
      const std::size_t bytes = Codec::FrameBytes(decoder.BitRate(), frame.data[0]);
      if (frame.bytes != bytes) return EngineStatus::kBadFrame;
    }
    decoder.Decode(frame, samples);
    return EngineStatus::kOk;
  }

  static std::size_t OutputBytes(const EngineOptions& options, std::size_t inputBytes) noexcept {
    if (!HasBitRate(options.modes.bitRate)) return 0;
    const std::size_t coded = Codec::kInfo.FrameBytes(options.modes.bitRate);
    constexpr auto kPCM = static_cast<std::size_t>(Codec::kInfo.pcmFrameBytes);
    return options.direction == EngineDirection::kDecode ? inputBytes / coded * kPCM
                                                         : inputBytes / kPCM * coded;
  }

 private:
  static bool HasBitRate(int bitRate) noexcept {
    return std::ranges::find(Codec::kBitRates, bitRate) != std::end(Codec::kBitRates);
  }

  template <class Operation>
  static void Visit(EngineHandle* handle, const Operation& operation) noexcept {
    if (handle->direction == EngineDirection::kDecode) {
      operation(static_cast<DecoderState*>(handle)->coder);
    } else {
      operation(static_cast<EncoderState*>(handle)->coder);
    }
  }
};

template <class Codec>
constexpr SpeechEngine MakeSpeechEngine() noexcept {
  using Functions = EngineFunctions<Codec>;
  return {.name = Codec::kInfo.name,
          .InfoBytes = Functions::InfoBytes,
          .Info = Functions::Info,
          .BankCount = Functions::BankCount,
          .BankSizes = Functions::BankSizes,
          .Initialize = Functions::Initialize,
          .Reinitialize = Functions::Reinitialize,
          .Control = Functions::Control,
          .Encode = Functions::Encode,
          .Decode = Functions::Decode,
          .OutputBytes = Functions::OutputBytes,
          .FrameBytes = Codec::FrameBytes};
}

}  // namespace Quorvex
