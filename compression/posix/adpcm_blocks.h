// The two ADPCM codings of wave files, block by block.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>
#include <vector>

namespace Quorvex {

/// Calls step(0), step(1), ... step(kCount - 1), each with a constant, so that what they work on
/// can stay in registers.
template <std::size_t kCount, class Step>
void ForEachConstant(const Step& step) {
  [&step]<std::size_t... kIndex>(std::index_sequence<kIndex...>) {
    (step(std::integral_constant<std::size_t, kIndex>()), ...);
  }
  (std::make_index_sequence<kCount>());
}

/// IMA (DVI) ADPCM: 4 bits a sample. A block begins with a header a channel, which holds its first
/// sample; then come groups of eight samples of each channel in turn. The decoding of the IMA's
/// recommended practices of 1992.
class IMABlocks {
 public:
  /// @param channels  at least 1.
  explicit IMABlocks(std::size_t channels) : channels_(channels) {}

  /// Bytes without which there is nothing to decode.
  std::size_t HeaderBytes() const { return 4 * channels_; }
  /// The frames of a block of so many bytes, at least HeaderBytes. Bytes that make no whole group
  /// do not count.
  std::size_t Frames(std::size_t bytes) const {
    return 1 + (bytes - HeaderBytes()) / (4 * channels_) * 8;
  }
  /// Decodes blocks of equal size. @param frames  of each block that are wanted.
  void Decode(const unsigned char* blocks, std::size_t count, std::size_t blockBytes,
              std::size_t frames, short* samples) const noexcept;

 private:
  std::size_t channels_;
};

/// Microsoft ADPCM: 4 bits a sample, mono or stereo. A block begins with a header, which holds the
/// first two samples of each channel and the number of its predictor. Source:
/// "Microsoft Adaptive Delta PCM" in the multimedia data standards update of 1994.
class MicrosoftADPCMBlocks {
 public:
  struct Predictor {
    std::int16_t first = 0;   // factor of the sample before, over 256
    std::int16_t second = 0;  // of the one before that
  };

  /// The predictors that every file has first; those that a file brings replace them.
  static const std::vector<Predictor>& StandardPredictors();

  /// @param channels  1 or 2.
  MicrosoftADPCMBlocks(std::size_t channels, const std::vector<Predictor>& predictors);

  std::size_t HeaderBytes() const { return 7 * channels_; }
  std::size_t Frames(std::size_t bytes) const {
    return 2 + (bytes - HeaderBytes()) * 2 / channels_;
  }
  void Decode(const unsigned char* blocks, std::size_t count, std::size_t blockBytes,
              std::size_t frames, short* samples) const noexcept;

 private:
  template <std::size_t kChannels>
  void DecodeAll(const unsigned char* blocks, std::size_t count, std::size_t blockBytes,
                 std::size_t frames, short* samples) const noexcept;

  std::size_t channels_;
  std::array<Predictor, 256> predictors_;  // a block names one in a byte
};

}  // namespace Quorvex
