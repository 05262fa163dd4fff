// COutputWAVMediaFileImpl: a wave file that samples are written to.
#pragma once

#include <MediaAccessor/result_code.h>

#include "formats/wav/speech_frames.h"
#include "formats/wav/wav_media_file.h"

namespace Quorvex {

/// The output side of the engine, with its six codings (WAVOutputCoding). One thread at a time.
class COutputWAVMediaFileImpl {
 public:
  explicit COutputWAVMediaFileImpl(SpeechEncoderMaker make =
                                       [](IPPCoder::CODEC codec) {
                                         return IPPEncoder::CreateInstance(codec);
                                       }) noexcept
      : speech_(make) {}

  /// The encoders of a speech coding are made, or reset when those of the same coding are there.
  /// @return QVERR_OK; QVERR_ALREADY_OPEN while open; QVERR_INVALID_ARGUMENT for a number that is
  ///         no coding; to make encoders: QVERR_CODEC_NOT_LICENSED where G.729A or TrueSpeech may
  ///         not be used, QVERR_CREATE_FAILED when they cannot be made. On failure the coding stays
  ///         what it was.
  QVERRORCODE_TAG SetOutputCoding(int coding) noexcept;
  /// Of the samples that will be written; the speech codings convert them. @return QVERR_OK;
  /// QVERR_ALREADY_OPEN while open.
  QVERRORCODE_TAG SetSamplingFrequency(std::uint32_t hertz) noexcept;
  QVERRORCODE_TAG SetChannelCount(std::uint16_t channels) noexcept;

  /// Why Open would refuse before it creates anything, or QVERR_OK. A speech coding's stream begins
  /// here; Open begins it anew. QVERR_ALREADY_OPEN;
  /// QVERR_NO_SAMPLING_FREQUENCY; those of CWAVMediaFileImpl::CheckOutput and SpeechFrames::Begin.
  QVERRORCODE_TAG Check() noexcept;

  /// @param write  QVERR_INVALID_ARGUMENT when false: this file is not for reading.
  /// @return also those of Check and CWAVMediaFileImpl::Open.
  QVERRORCODE_TAG Open(const wchar_t* name, bool write);
  QVERRORCODE_TAG Open(const char* name, bool write);

  /// As CWAVMediaFileImpl::Write; from a speech coding also the encoder's result.
  QVERRORCODE_TAG Write(const short* samples, std::size_t frames) noexcept;
  /// Finishes the file; deletes it when that fails.
  QVERRORCODE_TAG Close() noexcept;
  /// Deletes the file.
  void Abandon() noexcept { engine_.Abandon(); }

 private:
  bool IsSpeech() const noexcept;
  QVERRORCODE_TAG Drain() noexcept;
  QVERRORCODE_TAG FinishSpeech() noexcept;

  CWAVMediaFileImpl engine_;
  SpeechFrames speech_;
  int coding_ = 0;
  std::uint32_t samplingFrequency_ = 0;  // 0: not set
  std::uint16_t channels_ = 1;
};

}  // namespace Quorvex
