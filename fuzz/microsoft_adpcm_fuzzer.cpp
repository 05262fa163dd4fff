// The driver for Microsoft ADPCM.
#include "fuzz/fuzz_driver.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto block = [](const Quorvex::WaveFormat& format) { return format.blockAlign; };
  return fuzz::FuzzDriver(Quorvex::MicrosoftADPCMDriver(), Quorvex::kWaveTagMicrosoftADPCM, block,
                          data, size);
}
