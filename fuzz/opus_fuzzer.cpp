// Arbitrary bytes through the Opus reader.
#include "opus/opus_media_file.h"

#include "fuzz/fuzz_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  return fuzz::FuzzReader(Quorvex::OpusMediaFileFactory(), ".opus", fuzz::Length::kEstimate, data,
                          size);
}
