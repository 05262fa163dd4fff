// Arbitrary bytes through the portable WAV reader.
#include "formats/portable_wav/portable_wav_media_file.h"

#include "fuzz/fuzz_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  return fuzz::FuzzReader(Quorvex::PortableInputWAVMediaFileFactory(), ".wav", fuzz::Length::kKnown,
                          data, size);
}
