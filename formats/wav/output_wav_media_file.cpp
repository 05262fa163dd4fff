// What may be written, and when.
#include "formats/wav/output_wav_media_file.h"

#include <MediaAccessor/ipp_coder.h>
#include <MediaAccessor/wav_file_writer.h>

#include <algorithm>

#include "support/no_throw.h"
#include "support/text.h"

namespace Quorvex {
namespace {

constexpr std::uint16_t kTags[] = {kWaveTagPCM,    kWaveTagALaw,  kWaveTagMuLaw,
                                   kWaveTagGSM610, kWaveTagG729A, kWaveTagTrueSpeech};

constexpr IPPCoder::CODEC kSpeechCodecs[] = {{}, {}, {}, {}, IPPCoder::G729A, IPPCoder::G723_1_53};

}  // namespace

QVERRORCODE_TAG COutputWAVMediaFileImpl::SetOutputCoding(int coding) noexcept {
  if (engine_.IsOpen()) return QVERR_ALREADY_OPEN;
  if (coding < kWAVOutputPCM16 || coding > kWAVOutputTrueSpeech) return QVERR_INVALID_ARGUMENT;
  if (const IPPCoder::CODEC codec = kSpeechCodecs[coding]; codec != IPPCoder::CODEC{}) {
    const QVERRORCODE_TAG result = speech_.Select(codec);
    if (result != QVERR_OK) return result;
  }
  coding_ = coding;
  return QVERR_OK;
}

QVERRORCODE_TAG COutputWAVMediaFileImpl::SetSamplingFrequency(std::uint32_t hertz) noexcept {
  if (engine_.IsOpen()) return QVERR_ALREADY_OPEN;
  samplingFrequency_ = hertz;
  return QVERR_OK;
}

QVERRORCODE_TAG COutputWAVMediaFileImpl::SetChannelCount(std::uint16_t channels) noexcept {
  if (engine_.IsOpen()) return QVERR_ALREADY_OPEN;
  channels_ = channels;
  return QVERR_OK;
}

QVERRORCODE_TAG COutputWAVMediaFileImpl::Check() noexcept {
  if (engine_.IsOpen()) return QVERR_ALREADY_OPEN;
  if (samplingFrequency_ == 0) return QVERR_NO_SAMPLING_FREQUENCY;
  engine_.SetOutput(kTags[coding_], channels_,
                    IsSpeech() ? speech_.SamplingFrequency() : samplingFrequency_);
  const QVERRORCODE_TAG result = engine_.CheckOutput();
  return result == QVERR_OK && IsSpeech() ? speech_.Begin(channels_, samplingFrequency_) : result;
}

bool COutputWAVMediaFileImpl::IsSpeech() const noexcept {
  return kSpeechCodecs[coding_] != IPPCoder::CODEC{};
}

QVERRORCODE_TAG COutputWAVMediaFileImpl::Open(const wchar_t* name, bool write) {
  if (!write) return QVERR_INVALID_ARGUMENT;
  const QVERRORCODE_TAG result = Check();
  return result == QVERR_OK ? engine_.Open(name, CWAVMediaFileImpl::kModeWrite) : result;
}

QVERRORCODE_TAG COutputWAVMediaFileImpl::Open(const char* name, bool write) {
  return NoThrow([&] { return Open(ToWide(name).c_str(), write); });
}

QVERRORCODE_TAG COutputWAVMediaFileImpl::Write(const short* samples, std::size_t frames) noexcept {
  if (!engine_.IsOpen() || !IsSpeech()) return engine_.Write(samples, frames);
  QVERRORCODE_TAG result = QVERR_OK;
  while (result == QVERR_OK && frames > 0) {
    const std::size_t taken = std::min(frames, SpeechFrames::kMostAtOnce);
    result = speech_.Encode(samples, taken);
    if (result == QVERR_OK) result = Drain();
    samples += taken * channels_;
    frames -= taken;
  }
  return result;
}

// Moves what was coded into the file.
QVERRORCODE_TAG COutputWAVMediaFileImpl::Drain() noexcept {
  std::span<const unsigned char> blocks;
  const QVERRORCODE_TAG result = speech_.Take(blocks);
  return result == QVERR_OK ? engine_.WriteCoded(blocks.data(), blocks.size(), 0) : result;
}

QVERRORCODE_TAG COutputWAVMediaFileImpl::FinishSpeech() noexcept {
  QVERRORCODE_TAG result = speech_.End();
  if (result == QVERR_OK) result = Drain();
  // Counted once, since only the end tells how much of the last frame is audio.
  return result == QVERR_OK ? engine_.WriteCoded(nullptr, 0, speech_.Count()) : result;
}

QVERRORCODE_TAG COutputWAVMediaFileImpl::Close() noexcept {
  const QVERRORCODE_TAG result =
      engine_.IsOpen() && IsSpeech() ? FinishSpeech() : QVERRORCODE_TAG{QVERR_OK};
  if (result == QVERR_OK) return engine_.Close();
  engine_.Abandon();
  return result;
}

}  // namespace Quorvex
