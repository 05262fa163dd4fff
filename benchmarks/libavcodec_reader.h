// Reading a file with libavcodec, as the libraries of FFmpeg are meant to be used.
#pragma once

#include <string>

namespace benchmarks {

/// Reads a file of a container that libavformat knows to its end, averaged to mono. @return the
/// number of frames; 0 is failure.
unsigned long long ReadLibavformat(const std::string& path);

/// The same for bytes of Dialogic ADPCM, which no container holds: packets of a fixed size.
unsigned long long ReadLibavcodecVox(const std::string& path);

}  // namespace benchmarks
