// Arbitrary bytes through the Sun AU reader.
#include "formats/au/au_media_file.h"

#include "fuzz/fuzz_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  return fuzz::FuzzReader(Quorvex::AUMediaFileFactory(), ".au", fuzz::Length::kKnown, data, size);
}
