#include "codecs/engines/g729a/g729a_engine.h"

#include <cstddef>

#include "codecs/engines/engine_functions.h"
#include "codecs/engines/g729a/decoder.h"
#include "codecs/engines/g729a/encoder.h"
#include "codecs/engines/g729a/frame.h"

namespace Quorvex {
namespace {

struct G729A {
  static constexpr EngineInfo kInfo = {.name = "IPP_G729A",
                                       .samplingFrequency = 8000,
                                       .bitsPerSample = 16,
                                       .pcmFrameBytes = g729a::kFrameSamples * 2,
                                       .mostStreamBytes = g729a::kFrameBytes,
                                       .bitRateCount = 0};
  static constexpr int kBitRates[] = {8000};
  using Decoder = g729a::Decoder;
  using Encoder = g729a::Encoder;

  static std::size_t FrameBytes(int, unsigned char) noexcept { return g729a::kFrameBytes; }
};

constexpr SpeechEngine kEngine = MakeSpeechEngine<G729A>();

}  // namespace

const SpeechEngine& G729AEngine() noexcept { return kEngine; }

}  // namespace Quorvex
