// Arbitrary bytes as x.wav, through the registry.
#include "fuzz/fuzz_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string path = fuzz::FileOf(data, size, ".wav");
  Quorvex::MediaFilePtr file;
  const bool isExhausted =
      Quorvex::MediaFileOpen(path.c_str(), file) != Quorvex::QVERR_OK ||
      fuzz::Exercise(*file, size > 0 ? data[size - 1] : 0, fuzz::Length::kEstimate);
  unsigned long milliseconds = 0;
  Quorvex::MediaFileGetMilliseconds(path.c_str(), milliseconds, isExhausted);
  return 0;
}
