// The driver for IMA ADPCM.
#include "fuzz/fuzz_driver.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto block = [](const Quorvex::WaveFormat& format) { return format.blockAlign; };
  return fuzz::FuzzDriver(Quorvex::IMAADPCMDriver(), Quorvex::kWaveTagIMAADPCM, block, data, size);
}
