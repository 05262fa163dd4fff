// The speech encoder: gathers PCM into whole frames, after a conversion where the input has another
// sampling frequency, and pushes what the engine makes of them.
#include <MediaAccessor/ipp_encoder.h>

#include <algorithm>
#include <limits>
#include <span>

#include "codecs/sampling_frequency_conversion.h"
#include "codecs/speech_coder.h"
#include "support/allocator.h"
#include "support/cft_array.h"
#include "support/no_throw.h"

namespace Quorvex {
namespace {

using Samples = std::span<const short>;

class IPPEncoderImpl final : public IPPEncoder, public AllocatedObject {
 public:
  bool Initialize(IPPCoder::CODEC codec, const SpeechEngine* engine) noexcept {
    return coder_.Initialize(codec, 0, EngineDirection::kEncode, engine) &&
           begun_.Reserve(coder_.FrameSamples());
  }

  QVERRORCODE_TAG SetChannelCount(int channels) override {
    return channels <= 1 ? QVERR_OK : QVERR_UNSUPPORTED_CHANNELS;
  }
  QVERRORCODE_TAG Write(const void* data, unsigned long count) override;
  void SetSink(CMediaSink* sink) override { sink_ = sink; }
  int GetCodecSampleRate() const override { return coder_.SamplingFrequency(); }
  int GetCompressedFrameBytes() const override { return static_cast<int>(coder_.FrameBytes()); }
  IPPCoder::CODEC GetCodec() const override { return coder_.Codec(); }
  bool Reset() override {
    begun_.Clear();
    const bool isRestarted = !isConverted_ || conversion_.Restart();
    return coder_.Reset() && isRestarted;
  }
  int SetInputSampleRate(int rate) override;
  int GetInputSampleRate() const override { return inputRate_; }

 private:
  QVERRORCODE_TAG Convert(Samples samples) noexcept;
  QVERRORCODE_TAG EndStream() noexcept;
  QVERRORCODE_TAG Encode(Samples samples) noexcept;
  void Gather(Samples& samples, std::size_t count) noexcept;
  bool EncodeFrame(const short* samples) noexcept;
  QVERRORCODE_TAG Push() noexcept;

  SpeechCoder coder_;
  CMediaSink* sink_ = nullptr;
  CFTarray<short> begun_;           // samples that do not fill a frame yet
  CFTarray<unsigned char> output_;  // coded and not pushed yet
  int inputRate_ = 0;               // Hz; 0: the codec's
  bool isConverted_ = false;
  QVERRORCODE_TAG setUp_ = QVERR_OK;  // of the conversion
  SamplingFrequencyConversion conversion_;
};

int IPPEncoderImpl::SetInputSampleRate(int rate) {
  inputRate_ = rate;
  isConverted_ = rate != 0 && rate != coder_.SamplingFrequency();
  setUp_ = isConverted_ ? conversion_.SetUp(rate, coder_.SamplingFrequency()) : QVERR_OK;
  return isConverted_ ? setUp_ : rate;
}

QVERRORCODE_TAG IPPEncoderImpl::Write(const void* data, unsigned long count) {
  if (!IPPCoder::IsLicensedCodec(coder_.Codec())) return QVERR_NOT_LICENSED;
  if (sink_ == nullptr) return QVERR_NO_SINK;
  if (data == nullptr && count > 0) return QVERR_INVALID_ARGUMENT;
  if (setUp_ != QVERR_OK) return setUp_;
  if (count == 0) return EndStream();
  const Samples samples(static_cast<const short*>(data), count);
  return isConverted_ ? Convert(samples) : Encode(samples);
}

QVERRORCODE_TAG IPPEncoderImpl::Convert(Samples samples) noexcept {
  while (!samples.empty()) {
    const QVERRORCODE_TAG result = Encode(conversion_.Convert(samples));
    if (result != QVERR_OK) return result;
  }
  return QVERR_OK;
}

QVERRORCODE_TAG IPPEncoderImpl::EndStream() noexcept {
  QVERRORCODE_TAG result = QVERR_OK;
  if (isConverted_) {
    result = Encode(conversion_.Flush());
    if (!conversion_.Restart()) return QVERR_CREATE_FAILED;
  }
  if (result != QVERR_OK || begun_.IsEmpty()) return result;
  const std::size_t filled = begun_.Count();
  begun_.Resize(coder_.FrameSamples());  // there is room
  std::fill(begun_.Data() + filled, begun_.Data() + begun_.Count(), short{0});
  return Encode({});
}

QVERRORCODE_TAG IPPEncoderImpl::Encode(Samples samples) noexcept {
  const std::size_t whole = coder_.FrameSamples();
  const std::size_t frames = samples.size() / whole + 1;
  output_.Clear();
  if (frames > std::numeric_limits<unsigned long>::max() / coder_.MostFrameBytes() ||
      !output_.Reserve(frames * coder_.MostFrameBytes())) {
    return QVERR_CREATE_FAILED;
  }
  bool isCoded = true;
  while (isCoded && begun_.Count() + samples.size() >= whole) {
    const short* frame = samples.data();
    if (begun_.IsEmpty()) {
      samples = samples.subspan(whole);
    } else {
      Gather(samples, whole - begun_.Count());
      frame = begun_.Data();
    }
    begun_.Clear();
    isCoded = EncodeFrame(frame);
  }
  // What follows a frame that could not be coded may be more than a frame.
  if (isCoded) Gather(samples, samples.size());
  const QVERRORCODE_TAG pushed = Push();
  return isCoded ? pushed : QVERR_BAD_FORMAT;
}

// Moves samples to the frame that was begun.
void IPPEncoderImpl::Gather(Samples& samples, std::size_t count) noexcept {
  const std::size_t before = begun_.Count();
  begun_.Resize(before + count);  // there is room
  std::copy_n(samples.data(), count, begun_.Data() + before);
  samples = samples.subspan(count);
}

bool IPPEncoderImpl::EncodeFrame(const short* samples) noexcept {
  const std::size_t before = output_.Count();
  output_.Resize(before + coder_.MostFrameBytes());  // there is room
  std::size_t bytes = 0;
  const bool isCoded = coder_.Encode(samples, output_.Data() + before, bytes);
  output_.Resize(before + (isCoded ? bytes : 0));
  return isCoded;
}

QVERRORCODE_TAG IPPEncoderImpl::Push() noexcept {
  if (output_.IsEmpty()) return QVERR_OK;
  if (sink_ == nullptr) return QVERR_NO_SINK;  // detached by itself
  const auto bytes = static_cast<unsigned long>(output_.Count());
  return NoThrow([&] { return sink_->Write(output_.Data(), bytes); });
}

}  // namespace

IPPEncoder::IPPEncoder() = default;
IPPEncoder::~IPPEncoder() = default;

IPPEncoder* MakeEncoder(IPPCoder::CODEC codec, const SpeechEngine* engine) noexcept {
  auto* const encoder = new IPPEncoderImpl;
  if (encoder == nullptr || encoder->Initialize(codec, engine)) return encoder;
  delete encoder;
  return nullptr;
}

IPPEncoder* IPPEncoder::CreateInstance(IPPCoder::CODEC codec) noexcept {
  return MakeEncoder(codec, FindSpeechEngine(codec));
}
IPPEncoder* IPPEncoder::CreateInstance() noexcept { return CreateInstance(IPPCoder::G729A); }

}  // namespace Quorvex
