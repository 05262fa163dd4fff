// CWAVMediaFileImpl: the engine behind the wave reader and the wave writer.
#pragma once

#include <atomic>
#include <span>
#include <string>

#include <MediaAccessor/result_code.h>

#include "compression/compression_manager.h"
#include "formats/wav/wav_conversion.h"
#include "platform/riff_stream.h"
#include "support/built_in_media_file.h"
#include "support/cft_array.h"

namespace Quorvex {

/// One wave file, open for reading or for writing. One thread at a time, but for SetBusy.
class CWAVMediaFileImpl {
 public:
  static constexpr int kModeRead = 1;
  static constexpr int kModeWrite = 10;

  CWAVMediaFileImpl() = default;
  /// Closes.
  ~CWAVMediaFileImpl() { Close(); }
  CWAVMediaFileImpl(const CWAVMediaFileImpl&) = delete;
  CWAVMediaFileImpl& operator=(const CWAVMediaFileImpl&) = delete;

  /// What is to be written. Set before Open with kModeWrite.
  /// @param tag  kWaveTagPCM, kWaveTagALaw, kWaveTagMuLaw, kWaveTagGSM610, whose samples Write
  ///             codes; kWaveTagG729A, kWaveTagTrueSpeech, whose frames WriteCoded is given.
  void SetOutput(std::uint16_t tag, std::uint16_t channels, std::uint32_t samplesPerSecond) {
    output_ = {tag, channels, samplesPerSecond};
  }
  /// Why such an output is refused before anything is created, or QVERR_OK: QVERR_BAD_FORMAT for a
  /// coding that is not known, QVERR_MONO_ONLY for TrueSpeech of several channels,
  /// QVERR_BAD_CHANNEL_COUNT for no channel, QVERR_UNSUPPORTED_CHANNELS for more than two of
  /// G.729A, and QVERR_UNSUPPORTED_CHANNELS and QVERR_INVALID_ARGUMENT for channels, and a
  /// frequency, that do not fit the header.
  QVERRORCODE_TAG CheckOutput() const noexcept;

  /// Opens a file.
  /// @param mode  kModeRead: an existing one. kModeWrite: it is created, or truncated.
  /// @return QVERR_OK; QVERR_ALREADY_OPEN; QVERR_BAD_FILE_NAME for an empty name;
  ///         QVERR_INVALID_ARGUMENT for another mode; reading: QVERR_FILE_NOT_FOUND;
  ///         QVERR_FILE_OPEN_FAILED for one that exists; QVERR_BAD_FORMAT for what is no wave file
  ///         or has a coding that the compression manager does not convert; QVERR_FILE_IO when it
  ///         is cut off; writing: CheckOutput's; QVERR_BAD_FORMAT when the manager does not convert
  ///         to the coding; QVERR_FILE_WRITE_FAILED, after which the file is gone if it was
  ///         created. Whatever fails leaves the object closed.
  QVERRORCODE_TAG Open(const wchar_t* name, int mode);

  bool IsOpen() const noexcept { return mode_ != 0; }

  /// Closes. Writing: first codes what is left and writes the sizes; if any of that fails the file
  /// is deleted and the result is QVERR_FILE_WRITE_FAILED, or QVERR_BAD_FORMAT from the coding.
  QVERRORCODE_TAG Close() noexcept;
  /// Closes without finishing, and deletes a file that was being written.
  void Abandon() noexcept;

  /// The next block of interleaved 16-bit samples, valid until the next call; no frames at the end.
  /// @return QVERR_OK; QVERR_FILE_NOT_OPEN; QVERR_BAD_STATE while open for writing; QVERR_FILE_IO;
  ///         QVERR_BAD_FORMAT.
  QVERRORCODE_TAG Read(const short*& samples, unsigned long& frames) noexcept;

  /// Codes and writes interleaved 16-bit samples.
  /// @return QVERR_OK; QVERR_INVALID_ARGUMENT unless open for writing, with a coding of whose
  ///         samples this takes; QVERR_FILE_WRITE_FAILED; QVERR_BAD_FORMAT from the coding.
  QVERRORCODE_TAG Write(const short* samples, std::size_t frames) noexcept;
  /// Writes coded bytes as they are. @param frames  that they stand for.
  QVERRORCODE_TAG WriteCoded(const void* bytes, std::size_t count, std::size_t frames) noexcept;

  /// Lets every Read wait, looking every 50 ms, until it is taken back. Any thread.
  void SetBusy(bool busy) noexcept { busy_ = busy; }

  /// Of the file that is open for reading; all 0 otherwise.
  const AudioFacts& Facts() const noexcept { return facts_; }
  std::uint16_t FormatTag() const noexcept { return format_.tag; }

 private:
  struct Output {
    std::uint16_t tag = kWaveTagPCM;
    std::uint16_t channels = 0;
    std::uint32_t samplesPerSecond = 0;
  };

  QVERRORCODE_TAG OpenForReading(const wchar_t* name);
  QVERRORCODE_TAG OpenForWriting(const wchar_t* name);
  bool HasLastByte() noexcept;
  QVERRORCODE_TAG ReadPCM(const short*& samples, unsigned long& frames) noexcept;
  QVERRORCODE_TAG ReadConverted(const short*& samples, unsigned long& frames) noexcept;
  QVERRORCODE_TAG Fetch(std::size_t count) noexcept;
  QVERRORCODE_TAG CompleteFormat();
  bool WriteHeader() noexcept;
  void CountFrames(std::size_t frames) noexcept;
  QVERRORCODE_TAG Encode(ConvertExtent extent, std::size_t& produced) noexcept;
  QVERRORCODE_TAG FinishWriting() noexcept;
  void Reset() noexcept;

  platform::RiffStream stream_;
  int mode_ = 0;  // 0: closed
  std::wstring name_;
  std::atomic<bool> busy_ = false;
  WaveFormat format_;  // of the file
  CFTarray<unsigned char> buffer_;
  std::span<unsigned char> source_;  // of it: coded bytes that were read, or samples to be coded

  // Reading
  AudioFacts facts_;
  std::uint64_t dataOffset_ = 0;
  std::uint32_t dataSize_ = 0;
  std::uint32_t position_ = 0;  // bytes of the data that are done with
  bool hasLeftover_ = false;    // a conversion left bytes of its source
  WAVConversion conversion_;    // closed for 16-bit PCM

  // Writing
  Output output_;
  bool isCreated_ = false;  // the file is ours to delete
  platform::RiffChunk riff_;
  platform::RiffChunk data_;
  std::unique_ptr<CompressionStream> encoder_;  // null for what is written as it comes
  std::size_t pending_ = 0;                     // bytes in the buffer
  std::uint32_t frameCount_ = 0;                // written so far
};

}  // namespace Quorvex
