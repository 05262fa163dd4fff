// Arbitrary bytes through the portable WAV reader, used twice as one object.
#include <MediaAccessor/media_file_factory.h>

#include "formats/portable_wav/portable_wav_media_file.h"
#include "fuzz/fuzz_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string& path = fuzz::FileOf(data, size, ".wav");
  const Quorvex::MediaFilePtr file(Quorvex::PortableInputWAVMediaFileFactory().CreateMediaFile());
  for (const std::uint8_t choice : {std::uint8_t{0}, size > 0 ? data[0] : std::uint8_t{3}}) {
    if (file->Open(path.c_str()) != Quorvex::QVERR_OK) {
      if (file->IsOpen()) std::abort();
      continue;
    }
    fuzz::Exercise(*file, choice);
    if (file->Close() != Quorvex::QVERR_OK) std::abort();
  }
  return 0;
}
