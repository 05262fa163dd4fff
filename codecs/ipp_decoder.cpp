// The speech decoder: walks the data frame by frame into a buffer of PCM, which goes to the sink at
// the end, or earlier when another frame would not fit.
#include <MediaAccessor/ipp_decoder.h>

#include <algorithm>
#include <span>
#include <utility>

#include "codecs/speech_coder.h"
#include "support/allocator.h"
#include "support/cft_array.h"
#include "support/no_throw.h"

namespace Quorvex {
namespace {

constexpr unsigned char kErasureMarker = 3;

class IPPDecoderImpl final : public IPPDecoder, public AllocatedObject {
 public:
  // The PCM has the room that was reserved for it, no more.
  IPPDecoderImpl() { pcm_.SetGrowth(1, 1, false, false); }

  bool Initialize(IPPCoder::CODEC codec, long bitRate, const SpeechEngine* engine) noexcept {
    return coder_.Initialize(codec, bitRate, EngineDirection::kDecode, engine) &&
           carry_.Resize(std::max(coder_.MostFrameBytes(), coder_.FrameBytes()));
  }

  QVERRORCODE_TAG CheckChannelCount(int channels) const override {
    return channels <= 1 ? QVERR_OK : QVERR_UNSUPPORTED_CHANNELS;
  }
  QVERRORCODE_TAG Decode(const std::uint8_t* data, std::uint32_t count) override;
  void SetOutput(CMediaSink* sink) override { SetSink(sink); }
  int GetSampleRate() const override { return GetCodecSampleRate(); }
  int GetCompressedFrameBytes() const override { return static_cast<int>(coder_.FrameBytes()); }
  IPPCoder::CODEC GetCodec() const override { return coder_.Codec(); }
  bool Reset() override {
    carried_ = 0;
    return coder_.Reset();
  }
  void SetSink(CMediaSink* sink) override { sink_ = sink; }
  void SetKeepTail(bool keep) override { keepsTail_ = keep; }
  int GetCodecSampleRate() const override { return coder_.SamplingFrequency(); }
  std::uint64_t SamplesForBytes(std::uint32_t bytes) const override {
    return coder_.FrameSamples() * std::uint64_t{bytes / coder_.FrameBytes()};
  }
  void EnableErasureMarker() override { hasErasureMarker_ = true; }

 private:
  using Bytes = std::span<const unsigned char>;

  QVERRORCODE_TAG DecodeCarried(Bytes& rest) noexcept;
  QVERRORCODE_TAG DecodeRest(Bytes& rest) noexcept;
  const unsigned char* NextFrame(Bytes& rest) noexcept;
  QVERRORCODE_TAG DecodeFrame(const unsigned char* frame) noexcept;
  bool IsSilence(const unsigned char* frame) const noexcept;
  QVERRORCODE_TAG MakeRoom() noexcept;
  QVERRORCODE_TAG Push() noexcept;
  void KeepEnd(Bytes rest) noexcept;

  SpeechCoder coder_;
  CMediaSink* sink_ = nullptr;
  CFTarray<unsigned char> carry_;  // the frame that a call ended in; scratch for the last of a call
  std::size_t carried_ = 0;        // bytes of it; never more than a frame
  CFTarray<short> pcm_;            // decoded and not pushed yet
  bool keepsTail_ = false;
  bool hasErasureMarker_ = false;
};

QVERRORCODE_TAG IPPDecoderImpl::Decode(const std::uint8_t* data, std::uint32_t count) {
  if (!IPPCoder::IsLicensedCodec(coder_.Codec())) return QVERR_NOT_LICENSED;
  if (sink_ == nullptr) return QVERR_NO_SINK;
  if (data == nullptr && count > 0) return QVERR_INVALID_ARGUMENT;
  const std::uint64_t room = (count / coder_.FrameBytes() + 1) * coder_.FrameSamples();
  pcm_.Clear();
  if (!std::in_range<unsigned long>(room) || !pcm_.Reserve(room)) return QVERR_CREATE_FAILED;
  Bytes rest(data, count);
  QVERRORCODE_TAG result = DecodeCarried(rest);
  if (result == QVERR_OK && carried_ == 0) result = DecodeRest(rest);
  if (keepsTail_ && !rest.empty()) KeepEnd(rest);
  if (result == QVERR_OK) return Push();
  // What stands before a bad frame is good.
  if (result == QVERR_BAD_FORMAT) Push();
  return result;
}

// Fills the frame that an earlier call began, and decodes it once it is whole.
QVERRORCODE_TAG IPPDecoderImpl::DecodeCarried(Bytes& rest) noexcept {
  if (carried_ == 0) return QVERR_OK;
  const std::size_t taken = std::min(coder_.FrameBytes() - carried_, rest.size());
  std::copy_n(rest.data(), taken, carry_.Data() + carried_);
  rest = rest.subspan(taken);
  carried_ += taken;
  if (carried_ < coder_.FrameBytes()) return QVERR_OK;
  carried_ = 0;
  return DecodeFrame(carry_.Data());
}

QVERRORCODE_TAG IPPDecoderImpl::DecodeRest(Bytes& rest) noexcept {
  while (!rest.empty()) {
    QVERRORCODE_TAG result = MakeRoom();
    if (result == QVERR_OK) result = DecodeFrame(NextFrame(rest));
    if (result != QVERR_OK) return result;
  }
  return QVERR_OK;
}

// The last one is filled up with zeros.
const unsigned char* IPPDecoderImpl::NextFrame(Bytes& rest) noexcept {
  const std::size_t whole = coder_.FrameBytes();
  const unsigned char* frame = rest.data();
  if (rest.size() < whole) {
    std::fill_n(std::copy(rest.begin(), rest.end(), carry_.Data()), whole - rest.size(),
                static_cast<unsigned char>(0));
    frame = carry_.Data();
  }
  rest = rest.subspan(std::min(whole, rest.size()));
  return frame;
}

QVERRORCODE_TAG IPPDecoderImpl::DecodeFrame(const unsigned char* frame) noexcept {
  const std::size_t before = pcm_.Count();
  const std::size_t samples = coder_.FrameSamples();
  pcm_.Resize(before + samples);  // there is room
  if (IsSilence(frame)) {
    std::fill_n(pcm_.Data() + before, samples, short{0});
  } else if (!coder_.Decode(frame, pcm_.Data() + before)) {
    pcm_.Resize(before);
    return QVERR_BAD_FORMAT;
  }
  return QVERR_OK;
}

bool IPPDecoderImpl::IsSilence(const unsigned char* frame) const noexcept {
  const Bytes payload(frame + coder_.SkippedBytes(), frame + coder_.FrameBytes());
  if (hasErasureMarker_ && payload.front() == kErasureMarker) return true;
  return std::ranges::all_of(payload, [](unsigned char byte) { return byte == 0; });
}

QVERRORCODE_TAG IPPDecoderImpl::MakeRoom() noexcept {
  return pcm_.Capacity() - pcm_.Count() < coder_.FrameSamples() ? Push() : QVERR_OK;
}

QVERRORCODE_TAG IPPDecoderImpl::Push() noexcept {
  if (pcm_.IsEmpty()) return QVERR_OK;
  if (sink_ == nullptr) return QVERR_NO_SINK;  // detached by itself
  const auto samples = static_cast<unsigned long>(pcm_.Count());
  pcm_.Clear();
  return NoThrow([&] { return sink_->Write(pcm_.Data(), samples); });
}

// After an early stop: the last frame of the data, so that the next call's frames fit.
void IPPDecoderImpl::KeepEnd(Bytes rest) noexcept {
  carried_ = (rest.size() - 1) % coder_.FrameBytes() + 1;
  std::copy_n(rest.end() - static_cast<std::ptrdiff_t>(carried_), carried_, carry_.Data());
}

}  // namespace

IPPDecoder::IPPDecoder() = default;
IPPDecoder::~IPPDecoder() = default;
void IPPDecoder::Release() { delete this; }

IPPDecoder* MakeDecoder(IPPCoder::CODEC codec, long bitRate, const SpeechEngine* engine) noexcept {
  auto* const decoder = new IPPDecoderImpl;
  if (decoder == nullptr || decoder->Initialize(codec, bitRate, engine)) return decoder;
  delete decoder;
  return nullptr;
}

IPPDecoder* IPPDecoder::CreateInstance(IPPCoder::CODEC codec, long bitRate) noexcept {
  return MakeDecoder(codec, bitRate, FindSpeechEngine(codec));
}
IPPDecoder* IPPDecoder::CreateInstance(IPPCoder::CODEC codec) noexcept {
  return CreateInstance(codec, 0);
}
IPPDecoder* IPPDecoder::CreateInstance() noexcept { return CreateInstance(IPPCoder::G729A, 0); }

}  // namespace Quorvex
