// Arbitrary bytes through the wave engine's reader; other codings by the FFmpeg module, which is
// found beside this program.
#include <MediaAccessor/input_wav_media_file.h>

#include "fuzz/fuzz_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  return fuzz::FuzzReader(Quorvex::CInputWAVMediaFile::Factory(), ".wav", fuzz::Length::kEstimate,
                          data, size);
}
