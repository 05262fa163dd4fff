// The chunks of a RIFF/WAVE file.
#pragma once

#include <cstdint>

#include <MediaAccessor/result_code.h>

#include "compression/wave_format.h"
#include "platform/riff_stream.h"

namespace Quorvex {

/// What a wave file says about itself.
struct WAVHeader {
  WaveFormat format;
  std::uint64_t dataOffset = 0;  // of the first byte of audio in the file
  std::uint32_t dataSize = 0;    // bytes, as the file says
  std::uint32_t factCount = 0;   // frames; 0: not told
};

/// Walks through an open file from its beginning. May throw std::bad_alloc.
/// @return QVERR_OK; QVERR_FILE_IO when a chunk that is wanted is cut off; QVERR_BAD_FORMAT for
///         anything else that is not a wave file with one format and one stretch of data.
QVERRORCODE_TAG ReadWAVHeader(platform::RiffStream& stream, WAVHeader& header);

/// The length that the header tells, in milliseconds; 0 when it does not.
std::uint32_t WAVMilliseconds(const WAVHeader& header) noexcept;

}  // namespace Quorvex
