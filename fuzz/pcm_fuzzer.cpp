// The driver for PCM, floating point and G.711, in both directions.
#include "fuzz/fuzz_driver.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto frame = [](const Quorvex::WaveFormat& format) {
    const bool isLaw = format.tag == Quorvex::kWaveTagALaw || format.tag == Quorvex::kWaveTagMuLaw;
    return (isLaw ? std::size_t{1} : (format.bitsPerSample + std::size_t{7}) / 8) * format.channels;
  };
  return fuzz::FuzzDriver(Quorvex::PCMDriver(), 0, frame, data, size);
}
