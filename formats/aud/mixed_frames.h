// MixedFrames: a stream of G.723.1 frames, each of which tells its own length.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "codecs/engines/g723_1/frame_bits.h"
#include "support/header_reader.h"

namespace Quorvex {

/// Of a frame, whatever its length.
inline constexpr std::size_t kMixedFrameSamples = g723_1::kFrameSamples;

/// A frame of the stream.
struct MixedFrame {
  std::span<const unsigned char> bytes;  ///< all of it, unless the stream ends within it
  std::size_t samples = 0;               ///< that the bytes stand for
};

/// Takes frames out of a stream that comes in blocks:
///
///     block              | block              | block
///     frame | frame | fr   ame | f | frame | fra   me | f | f | frame
///
/// A frame in two blocks is put together here.
class MixedFrames {
 public:
  /// Begins a stream. @param bytes  of all its blocks.
  void Start(std::uint64_t bytes) noexcept {
    left_ = bytes;
    carried_ = 0;
  }

  /// Takes the next frame.
  /// @param block  becomes what follows the frame. It has to be used up, call by call, before the
  ///               block after it.
  /// @param frame  receives the frame, valid until the next call and as long as the block.
  /// @return false when the rest of the block is no more than the beginning of a frame.
  bool Next(std::span<const unsigned char>& block, MixedFrame& frame) noexcept;

 private:
  std::uint64_t left_ = 0;                                    // bytes after those that were taken
  std::array<unsigned char, g723_1::kMostFrameBytes> carry_;  // the beginning of a frame
  std::size_t carried_ = 0;                                   // bytes of it
};

/// Length of the frame that begins with this byte.
inline std::size_t MixedFrameBytes(unsigned char firstByte) noexcept {
  return g723_1::BytesOf(g723_1::TypeOf(firstByte));
}

/// So much of a stream is counted, 93 hours at 6.3 kbit/s, so that no sparse file of terabytes
/// keeps whoever opens it waiting.
inline constexpr std::uint64_t kMostCountedMixedBytes = std::uint64_t{256} << 20;

/// Counts the samples of a stream in a file, which reads all of it. What is beyond
/// kMostCountedMixedBytes or the end of the file, or cannot be read, counts as frames of 24 bytes.
/// @param offset  where the stream begins, in bytes.
/// @param bytes   the size of the stream.
std::uint64_t CountMixedSamples(HeaderReader& reader, std::uint64_t offset,
                                std::uint64_t bytes) noexcept;

}  // namespace Quorvex
