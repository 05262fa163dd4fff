// What may be written, and when.
#include "formats/wav/output_wav_media_file.h"

#include <MediaAccessor/ipp_coder.h>
#include <MediaAccessor/wav_file_writer.h>

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
    if (!IPPCoder::IsLicensedCodec(codec)) return QVERR_CODEC_NOT_LICENSED;
    return QVERR_CREATE_FAILED;
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
  engine_.SetOutput(kTags[coding_], channels_, samplingFrequency_);
  return engine_.CheckOutput();
}

QVERRORCODE_TAG COutputWAVMediaFileImpl::Open(const wchar_t* name, bool write) {
  if (!write) return QVERR_INVALID_ARGUMENT;
  const QVERRORCODE_TAG result = Check();
  return result == QVERR_OK ? engine_.Open(name, CWAVMediaFileImpl::kModeWrite) : result;
}

QVERRORCODE_TAG COutputWAVMediaFileImpl::Open(const char* name, bool write) {
  return NoThrow([&] { return Open(ToWide(name).c_str(), write); });
}

}  // namespace Quorvex
