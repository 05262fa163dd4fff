// SpeechFrames: samples into the frames of a speech codec, as a wave file holds them.
#pragma once

#include <MediaAccessor/ipp_encoder.h>
#include <MediaAccessor/ownership.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "support/cft_array.h"

namespace Quorvex {

/// How an encoder is made: as by IPPEncoder::CreateInstance.
using SpeechEncoderMaker = IPPEncoder* (*)(IPPCoder::CODEC codec);

/// Two encoders, one a channel, each with the queue of the frames that it made. Samples that do not
/// fill a frame are kept for the next ones. One thread at a time.
class SpeechFrames {
 public:
  static constexpr std::size_t kMostChannels = 2;
  static constexpr std::size_t kMostAtOnce = 4096;  // samples of a channel

  explicit SpeechFrames(SpeechEncoderMaker make) noexcept : make_(make) {}

  /// Makes the encoders of a codec, or resets them when they are there.
  /// @return QVERR_OK; QVERR_CODEC_NOT_LICENSED or QVERR_CREATE_FAILED when they cannot be made,
  ///         those of another codec staying; QVERR_CREATE_FAILED when they cannot be reset.
  QVERRORCODE_TAG Select(IPPCoder::CODEC codec) noexcept;

  // What follows needs encoders.

  /// Of what is coded, in Hz.
  std::uint32_t SamplingFrequency() const noexcept;

  /// Begins a stream.
  /// @param channels   1 to kMostChannels.
  /// @param frequency  of the samples, in Hz, at least 1; any but the codec's is converted.
  /// @return QVERR_OK; QVERR_INVALID_ARGUMENT or QVERR_BAD_STATE for a frequency that cannot be
  ///         converted; QVERR_CREATE_FAILED when memory runs out.
  QVERRORCODE_TAG Begin(std::size_t channels, std::uint32_t frequency) noexcept;
  /// Takes interleaved samples. @param frames  at most kMostAtOnce. @return the encoders' result.
  QVERRORCODE_TAG Encode(const short* samples, std::size_t frames) noexcept;
  /// Ends the stream: fills its last frames up with silence. @return the encoders' result.
  QVERRORCODE_TAG End() noexcept;

  /// Empties the queues into blocks, each a frame of every channel, in the order of the channels.
  /// @param blocks  receives them, valid until the next call.
  /// @return QVERR_OK; QVERR_CREATE_FAILED when memory runs out.
  QVERRORCODE_TAG Take(std::span<const unsigned char>& blocks) noexcept;

  /// How many samples of a channel the stream has after its conversion: without what fills the last
  /// frame up.
  std::uint64_t Count() const noexcept;

 private:
  // What an encoder pushed.
  class Queue final : public CMediaSink {
   public:
    QVERRORCODE_TAG SetChannelCount(int) override { return QVERR_OK; }
    QVERRORCODE_TAG Write(const void* data, unsigned long count) override;
    CFTarray<unsigned char> bytes;
  };

  const SpeechEncoderMaker make_;
  std::array<Queue, kMostChannels> queues_;            // before the encoders, which point to them
  std::array<IPPEncoderPtr, kMostChannels> encoders_;  // of one codec; or all null
  std::size_t channels_ = 0;
  std::uint32_t frequency_ = 0;
  std::uint64_t frames_ = 0;  // that were taken, as they came
  CFTarray<short> oneChannel_;
  CFTarray<unsigned char> blocks_;
};

}  // namespace Quorvex
