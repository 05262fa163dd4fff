// FrameDecoders: the decoders of a file whose audio is frames of a speech codec.
#pragma once

#include <MediaAccessor/ipp_decoder.h>
#include <MediaAccessor/ownership.h>

#include <array>
#include <cstddef>
#include <span>

#include "support/cft_array.h"

namespace Quorvex {

/// One decoder a channel. The frames of the channels alternate:
///
///     frame of channel 0 | frame of channel 1 | frame of channel 0 | ...
///
/// Only the last frame of each may be a part of one. One thread at a time.
class FrameDecoders {
 public:
  static constexpr std::size_t kMostChannels = 2;

  /// Makes them, at the beginning of a stream.
  /// @param bitRate   as IPPDecoder::CreateInstance takes it.
  /// @param channels  1 to kMostChannels.
  /// @return false, with nothing made, when there is no such decoder.
  bool Create(IPPCoder::CODEC codec, long bitRate, std::size_t channels) noexcept;
  /// Ends them.
  void Release() noexcept;

  // Of a channel, while there are decoders.
  std::size_t FrameBytes() const noexcept;
  std::size_t FrameSamples() const noexcept;
  int SamplingFrequency() const noexcept { return decoders_[0]->GetCodecSampleRate(); }

  /// Decodes from the beginning of a frame of channel 0 on.
  /// @param bytes    whole frames, but for the end of the stream.
  /// @param samples  receives `frames` samples of each channel, interleaved: what is decoded beyond
  ///                 them is dropped, what a channel lacks is silence.
  /// @return QVERR_OK; the first failure of a decoder; QVERR_CREATE_FAILED when memory runs out.
  QVERRORCODE_TAG Decode(std::span<const unsigned char> bytes, short* samples,
                         std::size_t frames) noexcept;

 private:
  QVERRORCODE_TAG DecodeChannel(std::size_t channel, std::span<const unsigned char> bytes,
                                short* samples, std::size_t frames) noexcept;
  bool Gather(std::size_t channel, std::span<const unsigned char> bytes) noexcept;

  std::array<IPPDecoderPtr, kMostChannels> decoders_;
  std::size_t channels_ = 0;
  CFTarray<unsigned char> gathered_;  // the frames of one channel, one after the other
};

}  // namespace Quorvex
