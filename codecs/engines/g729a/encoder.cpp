#include "codecs/engines/g729a/encoder.h"

#include <algorithm>
#include <span>

#include "codecs/engines/g729a/filters.h"
#include "codecs/engines/g729a/frame_bits.h"
#include "codecs/engines/g729a/line_spectrum.h"
#include "codecs/engines/g729a/line_spectrum_search.h"
#include "codecs/engines/g729a/lsf_search.h"
#include "codecs/engines/g729a/open_loop_pitch.h"

namespace Quorvex::g729a {

using namespace fixed_point;

namespace {

constexpr Word kWeighting = 24576;        // 0.75
constexpr Word kTilt = 22938;             // 0.7
constexpr std::size_t kFrameBegin = 120;  // within the samples that are analysed

// A(z / 0.75) (1 - 0.7 / z): the speech behind it has less of a fall towards the high frequencies,
// which would hide the pitch.
Filter Flatten(const Filter& weighted) noexcept {
  Filter flat = weighted;
  for (std::size_t i = 1; i <= kOrder; ++i) {
    flat[i] = Subtract(weighted[i], Multiply(weighted[i - 1], kTilt));
  }
  return flat;
}

}  // namespace

std::size_t Encoder::Encode(const short* samples, unsigned char* data) noexcept {
  Append(samples);
  FrameIndices indices;
  const Filters quantized = QuantizeFilters(indices.lsf);
  Filters weighted;
  std::ranges::transform(quantized, weighted.begin(),
                         [](const Filter& filter) { return Expand(filter, kWeighting); });
  Weight(quantized, weighted);

  const int openLoopLag = OpenLoopLag(weighted_.data() + kMostLag);
  Word* const excitation = excitation_.data() + kExcitationHistory;
  for (std::size_t i = 0; i < kSubframes; ++i) {
    indices.subframes[i] =
        subframeEncoder_.Encode(i, openLoopLag, weighted[i], excitation + i * kSubframeSamples);
  }
  indices.parity = ParityOf(indices.subframes[0].lag);
  Pack(indices, data);
  std::shift_left(excitation_.begin(), excitation_.end(), kFrameSamples);
  std::shift_left(weighted_.begin(), weighted_.end(), kFrameSamples);
  return kFrameBytes;
}

void Encoder::Append(const short* samples) noexcept {
  std::shift_left(samples_.begin(), samples_.end(), kFrameSamples);
  const auto newest = std::span(samples_).last<kFrameSamples>();
  std::copy_n(samples, kFrameSamples, newest.begin());
  highPass_.FilterInput(newest);
}

Encoder::Filters Encoder::QuantizeFilters(LSFIndices& indices) noexcept {
  cosines_ = SearchCosines(prediction_.Analyze(samples_.data()), cosines_);
  indices = SearchLSF(FrequenciesOf(cosines_), lsfPredictor_);
  const LineSpectrum before = quantized_;
  quantized_ = CosinesOf(lsfPredictor_.Decode(indices));
  return {FilterOf(Between(before, quantized_)), FilterOf(quantized_)};
}

// Makes the residual, where the excitation will be, and the weighted speech.
void Encoder::Weight(const Filters& quantized, const Filters& weighted) noexcept {
  for (std::size_t i = 0; i < kSubframes; ++i) {
    const std::size_t begin = i * kSubframeSamples;
    Word* const residual = excitation_.data() + kExcitationHistory + begin;
    Residual(quantized[i], samples_.data() + kFrameBegin + begin, kSubframeSamples, residual);
    Synthesize(Flatten(weighted[i]), residual, kSubframeSamples,
               weighted_.data() + kMostLag + begin);
  }
}

}  // namespace Quorvex::g729a
