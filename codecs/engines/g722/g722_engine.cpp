// The signal path, 160 samples at a time:
//
//     encoder   samples -> mirror filter -> lower band  -> 6 bits -> cut to 6, 5, 4 -> code word
//                                       \-> higher band -> 2 bits -------------------^
//
//     decoder   code word -> 6, 5 or 4 bits -> lower band  -> mirror filter -> samples
//                       \--> 2 bits --------> higher band --^
//
// Both sides of a band keep the same predictor and step, which follow the code words alone.
#include "codecs/engines/g722/g722_engine.h"

#include <algorithm>
#include <array>

#include "codecs/engines/engine_functions.h"
#include "codecs/engines/g722/code_words.h"
#include "codecs/engines/g722/quadrature_mirror_filter.h"
#include "codecs/engines/g722/sub_band.h"

namespace Quorvex {
namespace {

using namespace g722;
using fixed_point::Saturate;

constexpr std::size_t kWords = QuadratureMirrorFilter::kPairs;
constexpr int kWordsPerSecond = 8000;
constexpr int kMostWordBits = 8;

// What the decoder and the encoder share.
class G722Coder {
 public:
  void SetModes(const EngineModes& modes) noexcept {
    bitRate_ = modes.bitRate;
    wordBits_ = modes.bitRate / kWordsPerSecond;
  }
  int BitRate() const noexcept { return bitRate_; }

 protected:
  int WordBits() const noexcept { return wordBits_; }
  // Lower bits of the lower band that are not sent.
  int CutBits() const noexcept { return kMostWordBits - wordBits_; }

  LowerBand lower_;
  HigherBand higher_;
  QuadratureMirrorFilter filter_;

 private:
  int bitRate_ = 0;
  int wordBits_ = 0;
};

class G722Decoder : public G722Coder {
 public:
  void Start(const EngineModes& modes) noexcept {
    *this = G722Decoder();
    SetModes(modes);
  }

  void Decode(const CodedFrame& frame, short* samples) noexcept {
    if (frame.isErased) {
      std::fill_n(samples, 2 * kWords, short{0});
      return;
    }
    std::array<unsigned char, kWords> words;
    UnpackCodeWords(frame.data, WordBits(), kWords, words.data());
    const int cut = CutBits();
    const int lowerBits = WordBits() - 2;
    const unsigned lowerMask = (1U << lowerBits) - 1;
    // Both bands alternate.
    std::array<Word, 2 * kWords> levels, differences, zeroParts, predictions;
    for (std::size_t i = 0; i < kWords; ++i) {
      const Levels low = lower_.Dequantise(words[i] & lowerMask, cut);
      const Word high = higher_.Dequantise(static_cast<unsigned>(words[i] >> lowerBits));
      levels[2 * i] = low.sample;
      differences[2 * i] = low.difference;
      levels[2 * i + 1] = differences[2 * i + 1] = high;
    }
    AdaptivePredictor& lower = lower_.Predictor();
    AdaptivePredictor& higher = higher_.Predictor();
    AdaptZeros(lower.zeros, &differences[0], kWords, &zeroParts[0]);
    AdaptZeros(higher.zeros, &differences[1], kWords, &zeroParts[1]);
    Predict(lower.poles, higher.poles, differences.data(), zeroParts.data(), kWords,
            predictions.data());
    for (std::size_t i = 0; i < kWords; ++i) {
      const int low = LimitBandSample(predictions[2 * i] + levels[2 * i]);
      const int high = LimitBandSample(predictions[2 * i + 1] + levels[2 * i + 1]);
      // Samples of a band have 15 bits.
      filter_.First()[i] = static_cast<Word>(low + high);
      filter_.Second()[i] = static_cast<Word>(low - high);
    }
    Join(samples);
  }

 private:
  void Join(short* samples) noexcept {
    std::array<Long, kWords> even;
    std::array<Long, kWords> odd;
    filter_.Run(even.data(), odd.data());
    for (std::size_t i = 0; i < kWords; ++i) {
      samples[2 * i] = Saturate(even[i] >> 12);
      samples[2 * i + 1] = Saturate(odd[i] >> 12);
    }
  }
};

class G722Encoder : public G722Coder {
 public:
  void Start(const EngineModes& modes) noexcept {
    *this = G722Encoder();
    SetModes(modes);
  }

  std::size_t Encode(const short* samples, unsigned char* data) noexcept {
    for (std::size_t i = 0; i < kWords; ++i) {
      filter_.First()[i] = samples[2 * i];
      filter_.Second()[i] = samples[2 * i + 1];
    }
    std::array<Long, kWords> even;
    std::array<Long, kWords> odd;
    filter_.Run(even.data(), odd.data());
    std::array<unsigned char, kWords> words;
    for (std::size_t i = 0; i < kWords; ++i) {
      const unsigned low = lower_.Encode(LimitBandSample((even[i] + odd[i]) >> 15));
      const unsigned high = higher_.Encode(LimitBandSample((even[i] - odd[i]) >> 15));
      words[i] = static_cast<unsigned char>((high << 6 | low) >> CutBits());
    }
    PackCodeWords(words.data(), WordBits(), kWords, data);
    return kWords * static_cast<std::size_t>(WordBits()) / 8;
  }
};

struct G722 {
  using Decoder = G722Decoder;
  using Encoder = G722Encoder;

  static constexpr EngineInfo kInfo = {.name = "IPP_G722",
                                       .samplingFrequency = 16000,
                                       .bitsPerSample = 16,
                                       .pcmFrameBytes = 2 * kWords * sizeof(short),
                                       .mostStreamBytes = kWords,
                                       .bitRateCount = 0};
  static constexpr int kBitRates[] = {48000, 56000, 64000};

  static std::size_t FrameBytes(int bitRate, unsigned char) noexcept {
    return static_cast<std::size_t>(bitRate / kWordsPerSecond) * kWords / 8;
  }
};

constexpr SpeechEngine kEngine = MakeSpeechEngine<G722>();

}  // namespace

const SpeechEngine& G722Engine() noexcept { return kEngine; }

}  // namespace Quorvex
