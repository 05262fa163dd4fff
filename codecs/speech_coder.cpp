// How a coder comes to be: find the bit rate among the engine's, supply the memory that it asks
// for, and compute the length of a frame.
#include "codecs/speech_coder.h"

#include <algorithm>

#include "support/ft_log.h"

namespace Quorvex {
namespace {

constexpr SpeechCodec kCodecs[] = {
    {IPPCoder::G729A, "IPP_G729A", 8000, 0, false, true},
    {IPPCoder::G729A_HEADERED, "IPP_G729A", 8000, 11, true, true},
    {IPPCoder::G723_1_53, "IPP_G723.1", 5300, 0, false, true},
    {IPPCoder::G723_1_63, "IPP_G723.1", 6300, 0, false, true},
    {IPPCoder::G722, "IPP_G722", 0, 0, false, false},
    {IPPCoder::G722_1, "IPP_G722.1", 0, 0, false, false},
};
constexpr long kDefaultBitRate = 64000;

// Null for a number that is no codec.
const SpeechCodec* FindSpeechCodec(IPPCoder::CODEC codec) noexcept {
  const auto* const found = std::ranges::find(kCodecs, codec, &SpeechCodec::codec);
  return found != std::end(kCodecs) ? found : nullptr;
}

}  // namespace

const SpeechEngine* FindSpeechEngine(IPPCoder::CODEC codec) noexcept {
  const SpeechCodec* const known = FindSpeechCodec(codec);
  if (known != nullptr) return FindSpeechEngine(known->engine);
  LibraryLog().Printf(L"%d is no speech codec", static_cast<int>(codec));
  return nullptr;
}

bool SpeechCoder::Initialize(IPPCoder::CODEC codec, long bitRate, EngineDirection direction,
                             const SpeechEngine* engine) noexcept {
  codec_ = FindSpeechCodec(codec);
  engine_ = engine;
  bool isThere = codec_ != nullptr && engine_ != nullptr;
  if (isThere && direction == EngineDirection::kEncode && !codec_->isCoded) {
    LogRefusal(codec_->engine, L"this speech codec has no encoder here");
    isThere = false;
  }
  if (isThere && codec_->bitRate != 0) bitRate = codec_->bitRate;
  if (isThere && MakeCoder(bitRate != 0 ? bitRate : kDefaultBitRate, direction)) return true;
  Release();
  return false;
}

bool SpeechCoder::MakeCoder(long bitRate, EngineDirection direction) noexcept {
  if (!ReadInfo()) return false;
  const EngineInfo& info = Info();
  // An encoder's is fixed by its codec.
  const auto rates = info.BitRates();
  if (direction == EngineDirection::kDecode && std::ranges::count(rates, bitRate) == 0) {
    LogRefusal(codec_->engine, L"this speech codec has no such bit rate", bitRate);
    return false;
  }
  options_.direction = direction;
  options_.law = EngineLaw::kLinear;
  options_.modes.bitRate = static_cast<int>(bitRate);
  options_.modes.voiceActivityDetection = false;  // all frames have the same length
  if (!AllocateBanks()) return false;
  if (engine_->Initialize(options_, banks_.Data(), &handle_) != EngineStatus::kOk) return false;
  frameSamples_ = static_cast<std::size_t>(info.pcmFrameBytes) / sizeof(short);
  frameBytes_ = codec_->frameBytes != 0 ? static_cast<std::size_t>(codec_->frameBytes)
                                        : info.FrameBytes(options_.modes.bitRate);
  return true;
}

bool SpeechCoder::ReadInfo() noexcept {
  if (!info_.Resize(engine_->InfoBytes())) return false;
  engine_->Info(reinterpret_cast<EngineInfo*>(info_.Data()));
  return true;
}

const EngineInfo& SpeechCoder::Info() const noexcept {
  return *reinterpret_cast<const EngineInfo*>(info_.Data());
}

bool SpeechCoder::AllocateBanks() noexcept {
  if (!banks_.Resize(static_cast<std::size_t>(engine_->BankCount(options_)))) return false;
  std::fill_n(banks_.Data(), banks_.Count(), MemoryBank{});
  engine_->BankSizes(options_, banks_.Data());
  for (std::size_t i = 0; i < banks_.Count(); ++i) {
    banks_[i].memory = allocator_.Allocate(banks_[i].bytes);
    if (banks_[i].memory == nullptr) return false;
  }
  return true;
}

void SpeechCoder::Release() noexcept {
  for (std::size_t i = 0; i < banks_.Count(); ++i) allocator_.Free(banks_[i].memory);
  banks_.Reset();
  info_.Reset();
  handle_ = nullptr;
  codec_ = nullptr;
}

bool SpeechCoder::Reset() noexcept {
  return handle_ == nullptr || engine_->Reinitialize(options_.modes, handle_) == EngineStatus::kOk;
}

IPPCoder::CODEC SpeechCoder::Codec() const noexcept {
  return codec_ != nullptr ? codec_->codec : IPPCoder::CODEC{};
}

int SpeechCoder::SamplingFrequency() const noexcept {
  return codec_ != nullptr ? Info().samplingFrequency : 0;
}

std::size_t SpeechCoder::MostFrameBytes() const noexcept {
  return SkippedBytes() + static_cast<std::size_t>(Info().mostStreamBytes);
}

bool SpeechCoder::Decode(const unsigned char* frame, short* samples) noexcept {
  const unsigned char* const data = frame + SkippedBytes();
  // Of G.723.1 a shorter one may stand there; a longer one, which the engine refuses, is cut.
  const std::size_t told = engine_->FrameBytes(options_.modes.bitRate, data[0]);
  const CodedFrame coded = {.data = data, .bytes = std::min(told, frameBytes_ - SkippedBytes())};
  return engine_->Decode(handle_, coded, samples) == EngineStatus::kOk;
}

bool SpeechCoder::Encode(const short* samples, unsigned char* frame, std::size_t& bytes) noexcept {
  std::size_t coded = 0;
  std::fill_n(frame, SkippedBytes(), static_cast<unsigned char>(0));
  const EngineStatus status = engine_->Encode(handle_, samples, frame + SkippedBytes(), &coded);
  bytes = SkippedBytes() + coded;
  return status == EngineStatus::kOk;
}

}  // namespace Quorvex
