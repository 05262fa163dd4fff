// The two bands: from code words to samples, and back. Each codes the difference to its prediction
// in steps that adapt to the signal.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>

#include "codecs/engines/g722/adaptive_predictor.h"
#include "codecs/engines/g722/g722_tables.h"

namespace Quorvex::g722 {

/// A sample of a band.
constexpr int LimitBandSample(int sample) noexcept { return std::clamp(sample, -16384, 16383); }

/// Steps by 32nd parts of an octave, over eleven octaves.
inline constexpr auto kStepTable = [] {
  std::array<int, 353> table{};
  for (std::size_t i = 0; i < table.size(); ++i) {
    table[i] = kSteps[i % 32] * 2 / (1 << (11 - i / 32)) * 4;
  }
  return table;
}();

/// The quantiser's step.
class Step {
 public:
  /// @param mostLogarithm  Q11, the limit of its logarithm.
  /// @param offset         where in the table of steps a logarithm of 0 stands.
  constexpr Step(int mostLogarithm, std::size_t offset) noexcept
      : most_(mostLogarithm), offset_(offset), value_(kStepTable[offset]) {}

  /// Times a level, Q15.
  int Times(int level) const noexcept { return (value_ * level) >> 15; }

  void Adapt(int change) noexcept {
    constexpr int kLeak = 32512;  // Q15
    logarithm_ = std::clamp(((logarithm_ * kLeak) >> 15) + change, 0, most_);
    value_ = kStepTable[static_cast<std::size_t>(logarithm_ >> 6) + offset_];
  }

 private:
  int most_;
  std::size_t offset_;
  int logarithm_ = 0;
  int value_;
};

/// A table by code word instead of magnitude.
template <std::size_t Codes, std::size_t Magnitudes>
constexpr std::array<int, Codes> ByCode(const std::array<Word, Codes>& magnitudes,
                                        const std::array<Word, Magnitudes>& values) noexcept {
  std::array<int, Codes> table{};
  for (std::size_t code = 0; code < Codes; ++code) {
    const int magnitude = magnitudes[code];
    table[code] = values[static_cast<std::size_t>(magnitude < 0 ? -magnitude : magnitude)];
  }
  return table;
}

/// What each code word stands for in parts of a step, Q15: 8 times its level, with its sign.
template <std::size_t Codes, std::size_t Magnitudes>
constexpr std::array<int, Codes> SignedLevels(const std::array<Word, Codes>& magnitudes,
                                              const std::array<Word, Magnitudes>& levels) noexcept {
  std::array<int, Codes> table = ByCode(magnitudes, levels);
  for (std::size_t code = 0; code < Codes; ++code) table[code] *= magnitudes[code] < 0 ? -8 : 8;
  return table;
}

/// What a code word stands for: the level that its sample is made of, and the one that the state
/// follows.
struct Levels {
  Word sample;
  Word difference;
};

/// 0 to 4 kHz, six bits a sample. Its state follows the upper four alone, so that the other two can
/// be cut off on the way.
class LowerBand {
 public:
  /// Decodes a code word, but for the prediction: the predictor is not gone on with.
  /// @param code  of 6 - `cut` bits.
  Levels Dequantise(unsigned code, int cut) noexcept {
    const auto sample = static_cast<Word>(step_.Times(Level(code, cut)));
    return {sample, Adapt(code >> (2 - cut))};
  }
  AdaptivePredictor& Predictor() noexcept { return predictor_; }

  /// @return a code word of six bits.
  unsigned Encode(int sample) noexcept {
    const int difference = fixed_point::Saturate(sample - predictor_.poles.prediction);
    const bool isNegative = difference < 0;
    const int size = isNegative ? -difference - 1 : difference;
    const auto isBelow = [&](Word level) { return step_.Times(8 * level) <= size; };
    const auto interval = std::ranges::partition_point(kLowerDecisions, isBelow);
    const unsigned code = kLowerCodes[isNegative ? 0 : 1][interval - kLowerDecisions.begin()];
    predictor_.Update(Adapt(code >> 2));
    return code;
  }

 private:
  static constexpr int kMostLogarithm = 18432;
  static constexpr std::size_t kStepOffset = 64;  // two octaves above the higher band's
  static constexpr auto kLevels6 = SignedLevels(kLowerMagnitudes6, kLowerLevels6);
  static constexpr auto kLevels5 = SignedLevels(kLowerMagnitudes5, kLowerLevels5);
  static constexpr auto kLevels4 = SignedLevels(kLowerMagnitudes4, kLowerLevels4);
  static constexpr auto kStepChanges = ByCode(kLowerMagnitudes4, kLowerStepChanges);

  static int Level(unsigned code, int cut) noexcept {
    return cut == 0 ? kLevels6[code] : cut == 1 ? kLevels5[code] : kLevels4[code];
  }

  // @param code  the upper four bits.
  Word Adapt(unsigned code) noexcept {
    const auto difference = static_cast<Word>(step_.Times(kLevels4[code]));
    step_.Adapt(kStepChanges[code]);
    return difference;
  }

  Step step_{kMostLogarithm, kStepOffset};
  AdaptivePredictor predictor_;
};

/// 4 to 8 kHz, two bits a sample.
class HigherBand {
 public:
  /// As of the lower band. Both levels are the same.
  Word Dequantise(unsigned code) noexcept {
    const auto difference = static_cast<Word>(step_.Times(kLevels[code]));
    step_.Adapt(kStepChanges[code]);
    return difference;
  }
  AdaptivePredictor& Predictor() noexcept { return predictor_; }

  unsigned Encode(int sample) noexcept {
    const int difference = fixed_point::Saturate(sample - predictor_.poles.prediction);
    const bool isNegative = difference < 0;
    const int size = isNegative ? -difference - 1 : difference;
    const bool isAbove = size >= step_.Times(8 * kHigherDecision);
    const unsigned code = kHigherCodes[isNegative ? 0 : 1][isAbove ? 1 : 0];
    predictor_.Update(Dequantise(code));
    return code;
  }

 private:
  static constexpr int kMostLogarithm = 22528;
  static constexpr auto kLevels = SignedLevels(kHigherMagnitudes, kHigherLevels);
  static constexpr auto kStepChanges = ByCode(kHigherMagnitudes, kHigherStepChanges);

  Step step_{kMostLogarithm, 0};
  AdaptivePredictor predictor_;
};

}  // namespace Quorvex::g722
