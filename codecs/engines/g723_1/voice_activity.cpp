#include "codecs/engines/g723_1/voice_activity.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>

#include "codecs/engines/g723_1/arithmetic.h"
#include "codecs/engines/g723_1/voice_activity_tables.h"

namespace Quorvex::g723_1 {

using namespace fixed_point;

namespace {

// The energy is that of the newest window of the linear prediction.
constexpr std::size_t kFirstSample = 60;
constexpr Word kEnergyScale = 2913;  // 16 / 180, Q15

constexpr int kMostMultiple = 8;
constexpr int kLagTolerance = 3;
constexpr int kMostVoice = 6;

constexpr Long kLeastLevel = 0x80;
constexpr Long kMostLevel = 0x1FFFF;
constexpr int kLevelShift = 13;  // takes the level's highest bit to where a sum has its own

constexpr int kMostSpeechFrames = 3;
constexpr int kHangover = 6;

// Of what the filter leaves.
Long EnergyBehind(const Filter& filter, const Word* samples) noexcept {
  Long energy = 0;
  for (std::size_t n = kFirstSample; n < kFrameSamples; ++n) {
    Long sum = LongMultiply(samples[n], 0x2000);
    for (std::size_t i = 1; i <= kOrder; ++i) {
      sum = MultiplySubtract(sum, filter[i - 1], samples[n - i]);
    }
    const Word left = Round(sum);
    energy = MultiplyAdd(energy, left, left);
  }
  return MultiplyLong(energy, kEnergyScale);
}

}  // namespace

bool VoiceActivity::IsSpeech(const Word* samples, bool isSine) noexcept {
  const Long energy = EnergyBehind(noiseFilter_, samples);
  Adapt(HasPitch() || isSine);
  energy_ = energy;
  return HangsOver(Threshold() <= energy);
}

void VoiceActivity::AddLags(const std::array<int, kHalves>& lags) noexcept {
  std::shift_left(lags_.begin(), lags_.end(), kHalves);
  std::ranges::copy(lags, lags_.begin() + kHalves);
}

void VoiceActivity::Learn(const Filter& noiseFilter) noexcept {
  if (voice_ == 0) noiseFilter_ = noiseFilter;
}

// Whether the four lags are multiples of one. Lags that are found hit one multiple at most; those
// of the start are no pitch.
bool VoiceActivity::HasPitch() const noexcept {
  const int least = std::ranges::min(lags_);
  int hits = 0;
  for (const int lag : lags_) {
    for (int multiple = 1; multiple <= kMostMultiple; ++multiple) {
      if (std::abs(multiple * least - lag) <= kLagTolerance) ++hits;
    }
  }
  return hits == static_cast<int>(lags_.size());
}

// The level follows the energy of the frame before, upwards only slowly.
void VoiceActivity::Adapt(bool isVoice) noexcept {
  voice_ = std::clamp(voice_ + (isVoice ? 2 : -1), 0, kMostVoice);
  if (level_ > energy_) level_ = energy_ - (energy_ >> 2) + (level_ >> 2);
  level_ += voice_ == 0 ? level_ >> 5 : -(level_ >> 11);
  level_ = std::clamp(level_, kLeastLevel, kMostLevel);
}

// The energy below which there is only noise: the factor is the lower the louder the noise is.
Long VoiceActivity::Threshold() const noexcept {
  const Long shifted = level_ << kLevelShift;
  const int norm = LongNorm(shifted);
  const Word fraction = High(((shifted << norm) & 0x3F000000) << 1);
  const Word here = kThresholds[static_cast<std::size_t>(norm)];
  const Word louder = kThresholds[static_cast<std::size_t>(norm - 1)];
  const Long factor =
      MultiplySubtract(MultiplyAdd(Deposit(here), fraction, louder), fraction, here);
  return LongMultiply(Low(level_ >> 2), High(factor)) >> 11;
}

// Some frames behind speech are taken for speech.
bool VoiceActivity::HangsOver(bool isSpeech) noexcept {
  if (isSpeech) {
    ++speechFrames_;
    ++hangover_;
  } else {
    speechFrames_ = std::max(speechFrames_ - 1, 0);
  }
  if (speechFrames_ >= 2) {
    hangover_ = kHangover;
    speechFrames_ = std::min(speechFrames_, kMostSpeechFrames);
  }
  if (hangover_ == 0) return isSpeech;
  if (speechFrames_ == 0) --hangover_;
  return true;
}

}  // namespace Quorvex::g723_1
