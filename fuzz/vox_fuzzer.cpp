// Arbitrary bytes through the VOX reader.
#include "formats/vox/vox_media_file.h"

#include "fuzz/fuzz_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  return fuzz::FuzzReader(Quorvex::VOXMediaFileFactory(), ".vox", fuzz::Length::kKnown, data, size);
}
