// The driver for codings that the library leaves to FFmpeg.
#pragma once

#include "compression/posix/compression_driver.h"

namespace Quorvex {

/// Decodes what libavcodec does of the codings of wave files, and encodes GSM 6.10, both through a
/// module beside the library, which is loaded by the first format that needs it. As long as it
/// cannot be, nothing is possible, and the log says so each time.
const CompressionDriver& FFmpegDriver();

}  // namespace Quorvex
