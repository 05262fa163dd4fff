// The signal path:
//
//     frame ─ powers ────┬─ categories ─┐                       (envelope, categorization)
//       │                ├─ deviations ─┤
//       └─ vectors ──────┴──────────────┴─ coefficients         (coefficients)
//                              noise ──────────┤
//     last good frame ── if damaged or erased ─┤
//                                      DCT-IV, magnitude shift  (inverse_transform)
//                                              │
//     half of the frame before ─────── window, sum              (overlap)
//                                              │
//                                           samples
#include "codecs/engines/g722_1/g722_1_engine.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <utility>

#include "codecs/engines/engine_functions.h"
#include "codecs/engines/g722_1/bit_reader.h"
#include "codecs/engines/g722_1/categorization.h"
#include "codecs/engines/g722_1/coefficients.h"
#include "codecs/engines/g722_1/envelope.h"
#include "codecs/engines/g722_1/frame.h"
#include "codecs/engines/g722_1/inverse_transform.h"
#include "codecs/engines/g722_1/overlap.h"

namespace Quorvex {
namespace {

using g722_1::BitReader;
using g722_1::Categories;
using g722_1::Envelope;
using g722_1::kFrameSamples;
using g722_1::kMostFrameBytes;
using g722_1::Spectrum;

constexpr int kControlBits = 4;
constexpr int kMostControl = (1 << kControlBits) - 1;

bool AreOnes(BitReader& reader, int bits) noexcept {
  for (; bits > 0; --bits) {
    if (reader.Read(1) == 0) return false;
  }
  return true;
}

// False for a frame that no encoder sends.
bool ReadSpectrum(BitReader reader, g722_1::NoiseSource& noise, Spectrum& spectrum) noexcept {
  const Envelope envelope = g722_1::ReadEnvelope(reader);
  const int control = static_cast<int>(reader.Read(kControlBits));
  Categories categories = g722_1::Categorize(envelope.powers, reader.Left(), control);
  const bool isWhole = g722_1::ReadVectors(reader, envelope, categories, spectrum.coefficients);
  noise.Fill(envelope, categories, spectrum.coefficients);
  spectrum.magnitudeShift = envelope.magnitudeShift;
  // Of all sets of categories, the coarsest alone may take more bits than there are. The bits left
  // over are ones.
  const int left = std::max(reader.Left(), 0) - (isWhole ? 0 : 1);
  return envelope.isValid && (left >= 0 || control == kMostControl) && AreOnes(reader, left);
}

class G7221Decoder {
 public:
  void Start(const EngineModes& modes) noexcept {
    *this = {};
    SetModes(modes);
  }
  void SetModes(const EngineModes& modes) noexcept { bitRate_ = modes.bitRate; }
  int BitRate() const noexcept { return bitRate_; }

  void Decode(const CodedFrame& frame, short* samples) noexcept {
    Spectrum spectrum;
    if (!frame.isErased && ReadSpectrum(BitReader({frame.data, frame.bytes}), noise_, spectrum)) {
      lastGood_ = spectrum;
    } else {
      spectrum = std::exchange(lastGood_, {});
    }
    g722_1::Samples transformed;
    g722_1::InverseTransform(spectrum, transformed);
    overlap_.Add(transformed, samples);
  }

 private:
  int bitRate_ = 0;
  g722_1::NoiseSource noise_;
  Spectrum lastGood_;
  g722_1::Overlap overlap_;
};

struct G7221 {
  static constexpr EngineInfo kInfo = {.name = "IPP_G722.1",
                                       .samplingFrequency = 16000,
                                       .bitsPerSample = 16,
                                       .pcmFrameBytes = kFrameSamples * 2,
                                       .mostStreamBytes = kMostFrameBytes,
                                       .bitRateCount = 0};
  static constexpr int kBitRates[] = {24000, 32000};
  using Decoder = G7221Decoder;
  using Encoder = NoCoder;

  static std::size_t FrameBytes(int bitRate, unsigned char) noexcept {
    constexpr int kFramesPerSecond = kInfo.samplingFrequency / kFrameSamples;
    return static_cast<std::size_t>(bitRate / kFramesPerSecond / 8);
  }
};

constexpr SpeechEngine kEngine = MakeSpeechEngine<G7221>();

}  // namespace

const SpeechEngine& G7221Engine() noexcept { return kEngine; }

}  // namespace Quorvex
