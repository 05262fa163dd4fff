// Arbitrary bytes through the reader of raw frames and speech-coded wave files. How many they are
// decides what they are called.
#include "formats/aud/aud_media_file.h"

#include <iterator>

#include "fuzz/fuzz_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr const char* kExtensions[] = {".g722", ".g729a", ".alaw", ".mulaw"};
  return fuzz::FuzzReader(Quorvex::InputAUDMediaFileFactory(),
                          kExtensions[size % std::size(kExtensions)], fuzz::Length::kKnown, data,
                          size);
}
