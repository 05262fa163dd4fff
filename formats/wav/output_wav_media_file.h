// COutputWAVMediaFileImpl: a wave file that samples are written to.
#pragma once

#include <MediaAccessor/result_code.h>

#include "formats/wav/wav_media_file.h"

namespace Quorvex {

/// The output side of the engine, with its six codings (WAVOutputCoding). One thread at a time.
class COutputWAVMediaFileImpl {
 public:
  /// @return QVERR_OK; QVERR_ALREADY_OPEN while open; QVERR_INVALID_ARGUMENT for a number that is
  ///         no coding; QVERR_CODEC_NOT_LICENSED for G.729A and TrueSpeech where they may not be
  ///         used, and otherwise QVERR_CREATE_FAILED, since their encoders are not there. On
  ///         failure the coding stays what it was.
  QVERRORCODE_TAG SetOutputCoding(int coding) noexcept;
  /// Of the samples that will be written. @return QVERR_OK; QVERR_ALREADY_OPEN while open.
  QVERRORCODE_TAG SetSamplingFrequency(std::uint32_t hertz) noexcept;
  QVERRORCODE_TAG SetChannelCount(std::uint16_t channels) noexcept;

  /// Why Open would refuse before it creates anything, or QVERR_OK.
  QVERRORCODE_TAG Check() noexcept;

  /// @param write  QVERR_INVALID_ARGUMENT when false: this file is not for reading.
  /// @return also QVERR_ALREADY_OPEN; QVERR_NO_SAMPLING_FREQUENCY; those of
  ///         CWAVMediaFileImpl::Open.
  QVERRORCODE_TAG Open(const wchar_t* name, bool write);
  QVERRORCODE_TAG Open(const char* name, bool write);

  /// As CWAVMediaFileImpl::Write.
  QVERRORCODE_TAG Write(const short* samples, std::size_t frames) noexcept {
    return engine_.Write(samples, frames);
  }
  /// Finishes the file; deletes it when that fails.
  QVERRORCODE_TAG Close() noexcept { return engine_.Close(); }
  /// Deletes the file.
  void Abandon() noexcept { engine_.Abandon(); }

 private:
  CWAVMediaFileImpl engine_;
  int coding_ = 0;
  std::uint32_t samplingFrequency_ = 0;  // 0: not set
  std::uint16_t channels_ = 1;
};

}  // namespace Quorvex
