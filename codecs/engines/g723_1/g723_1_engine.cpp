#include "codecs/engines/g723_1/g723_1_engine.h"

#include <cstddef>

#include "codecs/engines/engine_functions.h"
#include "codecs/engines/g723_1/decoder.h"
#include "codecs/engines/g723_1/encoder.h"
#include "codecs/engines/g723_1/frame.h"
#include "codecs/engines/g723_1/frame_bits.h"

namespace Quorvex {
namespace {

struct G7231 {
  static constexpr EngineInfo kInfo = {.name = "IPP_G723.1",
                                       .samplingFrequency = 8000,
                                       .bitsPerSample = 16,
                                       .pcmFrameBytes = g723_1::kFrameSamples * 2,
                                       .mostStreamBytes = g723_1::kMostFrameBytes,
                                       .bitRateCount = 0};
  static constexpr int kBitRates[] = {g723_1::kLowRate, g723_1::kHighRate};
  using Decoder = g723_1::Decoder;
  using Encoder = g723_1::Encoder;

  static std::size_t FrameBytes(int, unsigned char firstByte) noexcept {
    return g723_1::BytesOf(g723_1::TypeOf(firstByte));
  }
};

constexpr SpeechEngine kEngine = MakeSpeechEngine<G7231>();

}  // namespace

const SpeechEngine& G7231Engine() noexcept { return kEngine; }

}  // namespace Quorvex
