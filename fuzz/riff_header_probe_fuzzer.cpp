// Arbitrary bytes through the RIFF header probe.
#include "support/riff_header_probe.h"

#include "fuzz/fuzz_file.h"
#include "platform/text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::wstring path = Quorvex::platform::Widen(fuzz::FileOf(data, size, ".wav"));
  Quorvex::RIFFHeaderProbe probe;
  if (probe.Open(path.c_str(), size % 2 != 0)) {
    if (probe.dataOffset > size || probe.dataSize > size - probe.dataOffset) std::abort();
    if (std::ftell(probe.stream.get()) != static_cast<long>(probe.dataOffset)) std::abort();
    if (probe.channels < 1 || probe.samplesPerSecond < 1) std::abort();
    if (probe.blockAlign % probe.channels != 0 || probe.formatChunkSize < 14) std::abort();
  } else {
    if (probe.stream != nullptr || probe.formatTag != 0 || probe.channels != 0) std::abort();
    if (probe.samplesPerSecond != 0 || probe.averageBytesPerSecond != 0) std::abort();
    if (probe.blockAlign != 0 || probe.bitsPerSample != 0 || probe.milliseconds != 0) std::abort();
    if (probe.dataOffset != 0 || probe.dataSize != 0 || probe.formatChunkSize != 0) std::abort();
  }
  return 0;
}
