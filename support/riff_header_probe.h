// RIFFHeaderProbe: the format of a WAV file, without a reader for it.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>

namespace Quorvex {

/// What the header of a RIFF/WAVE file says, mended where writers are known to be wrong, and the
/// stream to read the audio from. All fields are zero and the stream is null while nothing is open.
///
/// Numbers are little-endian and unsigned in the file. The rate and the bytes per second are signed
/// here: 0x80000000 and more is negative, that is, no usable number.
struct RIFFHeaderProbe {
  struct StreamCloser {
    void operator()(std::FILE* opened) const noexcept { std::fclose(opened); }
  };

  /// Opens a file and walks its chunks up to the first "fmt " and "data"; whatever was open before
  /// is closed. The stream then stands at the first data byte.
  /// @param path       not null.
  /// @param readWrite  whether the stream ("r+b") can be written to as well.
  /// @return false when it cannot be opened, is no regular file or is refused: it is no RIFF/WAVE
  ///         file, has no usable "fmt ", has a second "fmt " or "data" before the walk ends, or
  ///         a number that does not fit its field.
  /// May throw std::bad_alloc; nothing is open then either.
  bool Open(const wchar_t* path, bool readWrite);

  std::unique_ptr<std::FILE, StreamCloser> stream;  ///< 64-bit positions: platform/shared_stream.h
  std::uint16_t formatTag = 0;
  std::uint16_t channels = 0;              ///< at least 1
  std::int32_t samplesPerSecond = 0;       ///< of a channel, at least 1
  std::int32_t averageBytesPerSecond = 0;  ///< as the file has it, of any sign
  std::uint16_t blockAlign = 0;            ///< in bytes; a multiple of the channels, so it may be 0
  std::uint16_t bitsPerSample = 0;         ///< 0 when the bytes per second make less than one
  std::uint32_t milliseconds = 0;     ///< truncated; the largest number when longer, 0: not known
  std::uint32_t dataOffset = 0;       ///< in bytes; 0 when there is no "data" before the file ends
  std::uint64_t dataSize = 0;         ///< in bytes, all of them in the file
  std::uint32_t formatChunkSize = 0;  ///< in bytes, as the file has it
};

}  // namespace Quorvex
