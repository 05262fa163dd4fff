// Arbitrary bytes through the reader of raw frames and speech-coded wave files. How many they are
// decides what they are called.
#include "formats/aud/aud_media_file.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "fuzz/fuzz_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr const char* kExtensions[] = {".g722", ".g729a", ".alaw", ".mulaw"};
  // The number of samples that a file of mixed frames may tell.
  constexpr std::string_view kFact = "fact";
  const bool tells = std::search(data, data + size, kFact.begin(), kFact.end()) != data + size;
  return fuzz::FuzzReader(Quorvex::InputAUDMediaFileFactory(),
                          kExtensions[size % std::size(kExtensions)],
                          tells ? fuzz::Length::kMost : fuzz::Length::kKnown, data, size);
}
