// The audio compression manager: what can be converted into what, and streams that do it.
//
// On Windows it is the system's own (acm*); elsewhere it is a list of drivers, see
// posix/compression_driver.h. What a system does not offer is a refused suggestion.
#pragma once

#include <cstddef>
#include <memory>
#include <span>

#include "compression/wave_format.h"

namespace Quorvex {

/// The fields of a wanted format that are given; the manager fills in the others.
enum SuggestFields : unsigned {
  kSuggestTag = 0x10000,
  kSuggestChannels = 0x20000,
  kSuggestSamplesPerSecond = 0x40000,
  kSuggestBitsPerSample = 0x80000,
};

enum class Suggestion {
  kMade,
  kNotPossible,  ///< no driver does that in one step
  kFailed,       ///< anything else: the format is senseless, or the lock could not be had
};

/// Completes a format that `source` can be converted to in one step. Any thread; the whole library
/// waits at most 5,000 ms for its turn.
/// @param target  in: the given fields. Out, when the suggestion was made: the whole format;
///                otherwise not changed.
/// @param fields  of SuggestFields, combined.
/// May throw std::bad_alloc.
Suggestion SuggestFormat(const WaveFormat& source, WaveFormat& target, unsigned fields);

/// How much of its source a stream converts.
enum class ConvertExtent {
  kWholeBlocks,  ///< only whole blocks, which is the way to begin
  kAnything,     ///< the rest of a source that ends in the middle of a block, too
  kEnd,          ///< nothing follows: also what the stream has held back
};

/// A conversion from one format to another, with its buffers. One thread at a time.
class CompressionStream {
 public:
  /// Opens a stream for formats that a suggestion was made of. Any thread, with the wait of
  /// SuggestFormat. May throw std::bad_alloc.
  /// @param source  the bytes to be converted will be at the beginning of this buffer. Not owned.
  /// @return null when that fails.
  static std::unique_ptr<CompressionStream> Open(const WaveFormat& sourceFormat,
                                                 const WaveFormat& targetFormat,
                                                 std::span<unsigned char> source);
  ~CompressionStream();
  CompressionStream(const CompressionStream&) = delete;
  CompressionStream& operator=(const CompressionStream&) = delete;

  /// Converts bytes of the source buffer, as many as make sense.
  /// @param bytes     that it holds; at most its size.
  /// @param used      of those, that need not be given again.
  /// @param produced  bytes that Output begins with; 0 is no failure.
  /// @return false when they cannot be decoded.
  bool Convert(std::size_t bytes, ConvertExtent extent, std::size_t& used,
               std::size_t& produced) noexcept;

  /// What was converted, valid until the next Convert. Its size is the most that ever is.
  std::span<unsigned char> Output() noexcept;

 private:
  struct State;
  explicit CompressionStream(std::unique_ptr<State> state) noexcept;
  std::unique_ptr<State> state_;
};

}  // namespace Quorvex
