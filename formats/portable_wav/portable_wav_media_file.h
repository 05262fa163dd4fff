// The portable WAV reader: a strict subset of RIFF/WAVE, without any platform codec.
#pragma once

#include <MediaAccessor/result_code.h>

#include "support/g711.h"
#include "support/header_reader.h"
#include "support/unit_media_file.h"

namespace Quorvex {

class CMediaFileFactory;

/// The facts of a WAV file that the reader accepts.
struct PortableWAVHeader {
  UnitAudio audio;  // 1 or 2 channels, 1 to 96,000 Hz; a unit is a frame
  WaveLaw law = WaveLaw::kLinear;
  int bytesPerSample = 0;  // 1, 2 or 4
};

/// Reads the header. @return QVERR_OK; QVERR_BAD_FORMAT for anything that the reader does not take.
QVERRORCODE_TAG ParsePortableWAVHeader(HeaderReader& reader, PortableWAVHeader& header);

/// The format's factory.
const CMediaFileFactory& PortableInputWAVMediaFileFactory();

}  // namespace Quorvex
