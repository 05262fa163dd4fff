// The portable WAV reader: a strict subset of RIFF/WAVE, without any platform codec.
#pragma once

#include <cstdint>

#include <MediaAccessor/result_code.h>

#include "support/g711.h"
#include "support/header_reader.h"

namespace Quorvex {

class CMediaFileFactory;

/// The facts of a WAV file that the reader accepts.
struct PortableWAVHeader {
  WaveLaw law = WaveLaw::kLinear;
  int channels = 0;                     // 1 or 2
  std::uint32_t samplingFrequency = 0;  // in Hz, 1 to 96,000
  int bytesPerSample = 0;               // 1, 2 or 4
  std::uint64_t dataOffset = 0;         // of the first frame in the file, in bytes
  std::uint64_t frames = 0;
  std::uint32_t milliseconds = 0;  // truncated; the largest value when it does not fit
};

/// Reads the header. @return QVERR_OK; QVERR_BAD_FORMAT for anything that the reader does not take.
QVERRORCODE_TAG ParsePortableWAVHeader(HeaderReader& reader, PortableWAVHeader& header);

/// The format's factory.
const CMediaFileFactory& PortableInputWAVMediaFileFactory();

}  // namespace Quorvex
