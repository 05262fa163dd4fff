#include "codecs/engines/g723_1/encoder.h"

#include <algorithm>

#include "codecs/engines/g723_1/arithmetic.h"
#include "codecs/engines/g723_1/line_spectrum.h"
#include "codecs/engines/g723_1/line_spectrum_search.h"
#include "codecs/engines/g723_1/open_loop_pitch.h"
#include "codecs/engines/g723_1/perceptual_weighting.h"

namespace Quorvex::g723_1 {

using namespace fixed_point;

namespace {

// Of the frame that is coded, within the samples: each subframe is in the middle of its window.
constexpr std::size_t kFrameBegin = (kWindowSamples - kSubframeSamples) / 2;

}  // namespace

std::size_t Encoder::Encode(const short* samples, unsigned char* data) noexcept {
  Append(samples);
  const Analysis analysis = Analyze();
  FrameIndices indices;
  if (IsSpeech(analysis)) {
    EncodeSpeech(analysis, indices);
    silenceEncoder_.Restart();
  } else {
    EncodeSilence(analysis, indices);
  }
  std::shift_left(weighted_.begin(), weighted_.end(), kFrameSamples);
  std::shift_left(excitation_.begin(), excitation_.end(), kFrameSamples);
  return Pack(indices, data);
}

void Encoder::Append(const short* samples) noexcept {
  std::shift_left(samples_.begin(), samples_.end(), kFrameSamples);
  highPass_.Filter(samples, modes_.highPass, &samples_[kOldSamples]);
}

Encoder::Analysis Encoder::Analyze() noexcept {
  Analysis analysis;
  Predict(analysis);
  Weight(analysis);
  return analysis;
}

void Encoder::Predict(Analysis& analysis) noexcept {
  for (std::size_t i = 0; i < kSubframes; ++i) {
    analysis.windows[i] = Correlate(&samples_[i * kSubframeSamples]);
    const Prediction prediction = g723_1::Predict(analysis.windows[i]);
    analysis.filters[i] = prediction.filter;
    sineDetector_.Add(prediction);
  }
  analysis.isSine = sineDetector_.IsSine();
}

void Encoder::Weight(Analysis& analysis) noexcept {
  for (std::size_t i = 0; i < kSubframes; ++i) {
    const std::size_t begin = i * kSubframeSamples;
    analysis.weighting[i] = WeightingOf(analysis.filters[i]);
    FilterFormants(analysis.weighting[i], &samples_[kFrameBegin + begin],
                   &weighted_[kExcitationHistory + begin]);
  }

  std::array<Word, kExcitationHistory + kFrameSamples> copy;
  NormalizedCopy(weighted_.data(), weighted_.size(), copy.data());
  for (std::size_t half = 0; half < kHalves; ++half) {
    analysis.lags[half] = OpenLoopLag(&copy[kExcitationHistory + half * kHalfSamples]);
  }
  for (std::size_t i = 0; i < kSubframes; ++i) {
    analysis.harmonics[i] =
        HarmonicsOf(&copy[kExcitationHistory + i * kSubframeSamples], analysis.lags[i / 2]);
  }
}

bool Encoder::IsSpeech(const Analysis& analysis) noexcept {
  const bool isSpeech = !modes_.voiceActivityDetection ||
                        voiceActivity_.IsSpeech(&samples_[kOldSamples], analysis.isSine);
  // Of every frame, for those after it, whose modes may be others.
  voiceActivity_.AddLags(analysis.lags);
  silenceEncoder_.AddFrame(analysis.windows);
  return isSpeech;
}

void Encoder::EncodeSpeech(const Analysis& analysis, FrameIndices& indices) noexcept {
  indices.type = modes_.bitRate == kHighRate ? FrameType::kAtHighRate : FrameType::kAtLowRate;
  indices.halfLags = analysis.lags;
  indices.spectrum = QuantizeSpectrum(SpectrumOf(analysis.filters.back(), spectrum_), spectrum_);
  const auto filters = FiltersTo(DecodeSpectrum(indices.spectrum, spectrum_), analysis);
  SearchBudget budget;
  for (std::size_t i = 0; i < kSubframes; ++i) {
    const std::size_t begin = kExcitationHistory + i * kSubframeSamples;
    const Subframe target = ShapeHarmonics(analysis.harmonics[i], &weighted_[begin]);
    subframeEncoder_.Encode(i, {filters[i], target, analysis.isSine}, budget, indices,
                            &excitation_[begin]);
  }
}

// The decoder makes noise; the memories follow it.
void Encoder::EncodeSilence(const Analysis& analysis, FrameIndices& indices) noexcept {
  indices = silenceEncoder_.Encode(spectrum_);
  if (indices.type == FrameType::kSilence) voiceActivity_.Learn(silenceEncoder_.AverageFilter());
  const auto filters = FiltersTo(silenceEncoder_.Spectrum(), analysis);
  const NoisePitch pitch = silenceEncoder_.MakeExcitation(&excitation_[kExcitationHistory]);
  for (std::size_t i = 0; i < kSubframes; ++i) {
    subframeEncoder_.Follow(filters[i], pitch.lags[i], false, pitch.rows[i],
                            &excitation_[kExcitationHistory + i * kSubframeSamples]);
  }
}

// From the last frame's spectrum to this one, which is the last one from now on.
std::array<SubframeFilters, kSubframes> Encoder::FiltersTo(const LineSpectrum& spectrum,
                                                           const Analysis& analysis) noexcept {
  const Filters synthesis = FiltersBetween(spectrum_, spectrum);
  spectrum_ = spectrum;
  std::array<SubframeFilters, kSubframes> filters;
  for (std::size_t i = 0; i < kSubframes; ++i) {
    filters[i] = {synthesis[i], analysis.weighting[i], analysis.harmonics[i]};
  }
  return filters;
}

}  // namespace Quorvex::g723_1
