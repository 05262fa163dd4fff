// The polyphase filter: which coefficients are stored, and which rows and windows make which output
// samples. The multiplications are the kernel's.
#include "pipeline/polyphase_filter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <utility>

#include "pipeline/impulse_response.h"

namespace Quorvex {
namespace {

constexpr auto kStep = static_cast<std::int64_t>(kPolyphaseStep);
constexpr auto kRows = static_cast<std::int64_t>(kPolyphaseRows);

// Where not all phases are stored: how many are, of a filter that the ratio does not stretch. A
// cubic through four of them is wrong by 3/128 (w/32)^4 at most, w = 0.95 pi being the highest
// frequency that passes: -115 dB. The noise of rounding to 16 bits is at -92 dB of a tone at half
// scale.
constexpr double kStoredPhases = 32;

constexpr std::int64_t kMostRepeatedRows = 128;

std::int64_t DividedUp(std::int64_t value, std::int64_t by) { return (value + by - 1) / by; }

// x such that a x = 1 modulo `modulus`, where they have no common divisor.
std::int64_t InverseModulo(std::int64_t a, std::int64_t modulus) {
  std::int64_t remainder = modulus;
  std::int64_t next = a % modulus;
  std::int64_t factor = 0;
  std::int64_t nextFactor = 1;
  while (next != 0) {
    const std::int64_t quotient = remainder / next;
    remainder = std::exchange(next, remainder - quotient * next);
    factor = std::exchange(nextFactor, factor - quotient * nextFactor);
  }
  return (factor % modulus + modulus) % modulus;
}

// Comparisons are written so that a NaN is outside.
bool IsWithinLimits(const PolyphaseDesign& design) {
  return design.inputFrequency >= 1 && design.outputFrequency >= 1 &&
         design.outputFrequency <=
             std::int64_t{PolyphaseDesign::kMostFactor} * design.inputFrequency &&
         design.inputFrequency <=
             std::int64_t{PolyphaseDesign::kMostDivisor} * design.outputFrequency &&
         design.length >= 2 && design.length <= PolyphaseDesign::kLongest &&
         design.length % 2 == 0 && design.rollOff > 0 && design.rollOff <= 1 &&
         design.kaiserBeta >= 0 && design.kaiserBeta <= PolyphaseDesign::kMostBeta;
}

// How much longer than the sinc of the input's own frequency the response is.
double Stretching(const FrequencyRatio& ratio) {
  return std::max(1.0, static_cast<double>(ratio.M()) / static_cast<double>(ratio.L()));
}

void Group(PolyphaseLayout& layout, std::int64_t repetitions) {
  layout.rows = layout.ratio.L() * repetitions;
  layout.period = layout.ratio.M() * repetitions;
  layout.groups = DividedUp(layout.rows, kRows);
  layout.isAligned = layout.period % kStep == 0;
  layout.steps = 0;
  for (std::int64_t group = 0; group < layout.groups; ++group) {
    const std::int64_t lastRow = std::min(group * kRows + kRows, layout.rows) - 1;
    const std::int64_t end = layout.RowSample(lastRow) + layout.half + 1;
    layout.steps = std::max(layout.steps, DividedUp(end - layout.WindowSample(group), kStep));
  }
}

bool Fits(const PolyphaseLayout& layout) {
  return layout.Coefficients() * sizeof(float) <= PolyphaseLayout::kMostBytes;
}

PolyphaseLayout Plan(const PolyphaseDesign& design) {
  PolyphaseLayout layout;
  layout.ratio = FrequencyRatio(design.inputFrequency, design.outputFrequency);
  layout.half = design.length / 2;
  const std::int64_t l = layout.ratio.L();
  const std::int64_t m = layout.ratio.M();
  // Both are powers of two, so the larger one does for both.
  const std::int64_t repetitions = std::max(kRows / std::gcd(kRows, l), kStep / std::gcd(kStep, m));
  // More could not fit, and laying them out would take long.
  if (static_cast<std::size_t>(l) * kPolyphaseStep * sizeof(float) <= PolyphaseLayout::kMostBytes) {
    if (l * repetitions <= kMostRepeatedRows) {
      Group(layout, repetitions);
      if (Fits(layout)) return layout;
    }
    Group(layout, 1);
    if (Fits(layout)) return layout;
  }
  layout.isInterpolated = true;
  layout.phases = static_cast<std::int64_t>(std::ceil(kStoredPhases / Stretching(layout.ratio)));
  layout.rows = layout.phases + kRows - 1;  // those of the places -1 to phases + 1
  layout.steps = 2 * DividedUp(design.length, 2 * kStep);
  return layout;
}

// Half of the response, from `phase` / phases of an input sample on.
using HalfResponse = std::array<double, PolyphaseDesign::kLongest / 2>;

HalfResponse Response(const WindowedSinc& sinc, std::int64_t phase, std::int64_t phases) {
  HalfResponse response;
  sinc.Compute(static_cast<double>(phase) / static_cast<double>(phases), response.data());
  return response;
}

}  // namespace

std::size_t PolyphaseLayout::Coefficients() const {
  const std::int64_t wholeRows = isInterpolated ? rows : groups * kRows;
  return static_cast<std::size_t>(wholeRows * steps * kStep);
}

std::int64_t PolyphaseLayout::RowSample(std::int64_t row) const {
  return row * ratio.M() / ratio.L();
}

std::int64_t PolyphaseLayout::WindowSample(std::int64_t group) const {
  const std::int64_t first = RowSample(group * kRows) - half + 1;
  return isAligned ? first & -kStep : first;
}

// Samples to make.
struct PolyphaseFilter::Pass {
  const float* input;
  InputPosition start;
  std::int64_t firstRow;
  std::int64_t count;
  float gain;
  short* output;
};

QVERRORCODE_TAG PolyphaseFilter::GetSize(const PolyphaseDesign& design,
                                         std::size_t& bytes) noexcept {
  bytes = 0;
  if (!IsWithinLimits(design)) return QVERR_BAD_STATE;
  bytes = AlignedFloats::Bytes(Plan(design).Coefficients());
  return QVERR_OK;
}

QVERRORCODE_TAG PolyphaseFilter::Initialize(const PolyphaseDesign& design,
                                            const PolyphaseKernel* kernel) noexcept {
  kernel_ = nullptr;
  if (!IsWithinLimits(design)) return QVERR_BAD_STATE;
  layout_ = Plan(design);
  const FrequencyRatio& ratio = layout_.ratio;
  inverse_ = InverseModulo(ratio.M(), ratio.L());

  coefficients_ = memory_.Allocate(layout_.Coefficients());
  if (coefficients_ == nullptr) return QVERR_CREATE_FAILED;
  const WindowedSinc sinc(design.rollOff / Stretching(ratio), design.kaiserBeta, layout_.half);
  if (layout_.isInterpolated) {
    StoreRows(sinc);
  } else {
    StoreGroups(sinc);
  }
  kernel_ = kernel != nullptr ? kernel : PolyphaseKernels().front();
  return QVERR_OK;
}

// Row i is the response (i - 1) / phases after the input samples. Every value stands on both sides
// of its middle, and those of the phases at the ends in two rows, which belong to neighbouring
// input samples.
void PolyphaseFilter::StoreRows(const WindowedSinc& sinc) noexcept {
  const std::int64_t half = layout_.half;
  const auto store = [&](std::int64_t row, std::int64_t place, double value) {
    if (row < 0 || row >= layout_.rows || place < 0 || place >= 2 * half) return;
    coefficients_[row * layout_.steps * kStep + place] = static_cast<float>(value);
  };
  for (std::int64_t phase = 0; phase < layout_.phases; ++phase) {
    const auto response = Response(sinc, phase, layout_.phases);
    for (std::int64_t i = 0; i < half; ++i) {
      for (std::int64_t later = -1; later <= 2; ++later) {
        const std::int64_t moved = later * layout_.phases;
        store(1 + phase + moved, half - 1 - i + later, response[static_cast<std::size_t>(i)]);
        store(1 - phase + moved, half - 1 + i + later, response[static_cast<std::size_t>(i)]);
      }
    }
  }
}

// The response at a phase is what comes before an output sample of that phase, and after one of the
// phase 1 - phase; after one of the phase 0 it is that of the phase 0.
void PolyphaseFilter::StoreGroups(const WindowedSinc& sinc) noexcept {
  const std::int64_t l = layout_.ratio.L();
  for (std::int64_t phase = 0; phase < l; ++phase) {
    const auto response = Response(sinc, phase, l);
    const std::int64_t mirrored = phase == 0 ? 0 : l - phase;
    for (std::int64_t row = phase * inverse_ % l; row < layout_.rows; row += l) {
      StoreSide(row, 0, -1, response.data());
    }
    for (std::int64_t row = mirrored * inverse_ % l; row < layout_.rows; row += l) {
      StoreSide(row, phase == 0 ? 0 : 1, 1, response.data());
    }
  }
}

// Stores the half of a response that begins `first` input samples from a row's own and goes away
// from it.
void PolyphaseFilter::StoreSide(std::int64_t row, std::int64_t first, std::int64_t direction,
                                const double* response) noexcept {
  const std::int64_t group = row / kRows;
  float* const coefficients = coefficients_ + (group * layout_.steps * kRows + row % kRows) * kStep;
  auto place =
      static_cast<std::uint64_t>(layout_.RowSample(row) + first - layout_.WindowSample(group));
  for (std::int64_t i = 0; i < layout_.half; ++i) {
    coefficients[place / kPolyphaseStep * kPolyphaseRows * kPolyphaseStep +
                 place % kPolyphaseStep] = static_cast<float>(response[i]);
    place += static_cast<std::uint64_t>(direction);
  }
}

std::size_t PolyphaseFilter::OutputCount(std::int64_t length, double time) const noexcept {
  const InputPosition start = layout_.ratio.PositionAt(time);
  return static_cast<std::size_t>(layout_.ratio.CountBefore(start, start.sample + length));
}

QVERRORCODE_TAG PolyphaseFilter::Process(const float* input, std::int64_t length,
                                         double normalisation, double& time, short* output,
                                         std::size_t& count) const noexcept {
  count = 0;
  if (kernel_ == nullptr) return QVERR_BAD_STATE;
  const FrequencyRatio& ratio = layout_.ratio;
  const InputPosition start = ratio.PositionAt(time);
  const std::int64_t made = ratio.CountBefore(start, start.sample + length);
  if (made == 0) return QVERR_OK;
  if (output != nullptr) {
    const auto gain = static_cast<float>(normalisation);
    if (layout_.isInterpolated) {
      MakeFromRows({input, start, 0, made, gain, output});
    } else {
      MakeFromGroups({input, start, RowAt(start), made, gain, output});
    }
  }
  time = ratio.TimeAt(ratio.Advanced(start, made));
  count = static_cast<std::size_t>(made);
  return QVERR_OK;
}

namespace {

// The weights of the values at -1, 0, 1 and 2 in the cubic through them (Lagrange), at `place`.
void SetCubicWeights(double place, double gain, float* weights) {
  const double before = place + 1;
  const double after = place - 1;
  const double last = place - 2;
  weights[0] = static_cast<float>(-place * after * last * gain / 6);
  weights[1] = static_cast<float>(before * after * last * gain / 2);
  weights[2] = static_cast<float>(-before * place * last * gain / 2);
  weights[3] = static_cast<float>(before * place * after * gain / 6);
}

}  // namespace

void PolyphaseFilter::MakeFromRows(const Pass& pass) const noexcept {
  const FrequencyRatio& ratio = layout_.ratio;
  const double rowsPerPhase = static_cast<double>(layout_.phases) / static_cast<double>(ratio.L());
  PolyphaseInterpolation interpolation = {};
  interpolation.steps = static_cast<std::size_t>(layout_.steps);
  const std::int64_t wholeStep = ratio.M() / ratio.L();
  const std::int64_t phaseStep = ratio.M() % ratio.L();
  InputPosition position = pass.start;
  for (std::int64_t i = 0; i < pass.count; ++i) {
    const double place = static_cast<double>(position.phase) * rowsPerPhase;
    const auto row = static_cast<std::int64_t>(place);
    interpolation.coefficients = coefficients_ + row * layout_.steps * kStep;
    SetCubicWeights(place - static_cast<double>(row), pass.gain, interpolation.weights);
    interpolation.window = pass.input + (position.sample - layout_.half + 1);
    pass.output[i] = kernel_->filterInterpolated(interpolation);
    // As Advanced(position, 1), without dividing.
    position.sample += wholeStep;
    position.phase += phaseStep;
    if (position.phase >= ratio.L()) {
      position.phase -= ratio.L();
      ++position.sample;
    }
  }
}

// The row that makes the sample at a position. Of repeated ones it is the one whose place in the
// window suits the place in the input, which keeps loads aligned and the order of summing the same.
std::int64_t PolyphaseFilter::RowAt(InputPosition position) const noexcept {
  const std::int64_t l = layout_.ratio.L();
  const std::int64_t first = position.phase * inverse_ % l;
  if (!layout_.isAligned) return first;
  for (std::int64_t row = first; row < layout_.rows; row += l) {
    const std::int64_t begin = position.sample - layout_.RowSample(row);
    if ((begin - layout_.half - 1) % kStep == 0) return row;
  }
  return first;
}

void PolyphaseFilter::MakeFromGroups(const Pass& pass) const noexcept {
  const std::int64_t lastRow = pass.firstRow + pass.count - 1;
  const std::int64_t firstGroup = pass.firstRow / kRows;
  const std::int64_t lastGroup =
      lastRow / layout_.rows * layout_.groups + lastRow % layout_.rows / kRows;
  const std::int64_t touched = std::min(layout_.groups, lastGroup - firstGroup + 1);
  for (std::int64_t i = 0; i < touched; ++i) {
    MakeFromGroup(pass, (firstGroup + i) % layout_.groups);
  }
}

// Goes through the periods in which the group makes samples: windows of which all rows are wanted
// as one job, the others, at the ends, by themselves.
void PolyphaseFilter::MakeFromGroup(const Pass& pass, std::int64_t group) const noexcept {
  const std::int64_t row = group * kRows;
  const std::int64_t rowCount = std::min(kRows, layout_.rows - row);
  const std::int64_t origin = pass.start.sample - layout_.RowSample(pass.firstRow);
  PolyphaseWindows windows = {};
  windows.coefficients = coefficients_ + group * layout_.steps * kRows * kStep;
  windows.steps = static_cast<std::size_t>(layout_.steps);
  windows.windowDistance = static_cast<std::size_t>(layout_.period);
  windows.gain = pass.gain;
  windows.outputDistance = static_cast<std::size_t>(layout_.rows);

  std::int64_t period = pass.firstRow < row + rowCount ? 0 : 1;
  for (;;) {
    const std::int64_t place = period * layout_.rows + row - pass.firstRow;  // in the output
    if (place >= pass.count) break;
    windows.window = pass.input + (origin + period * layout_.period + layout_.WindowSample(group));
    const std::int64_t last = pass.count - kRows;
    if (rowCount == kRows && place >= 0 && place <= last) {
      const std::int64_t whole = (last - place) / layout_.rows + 1;
      windows.count = static_cast<std::size_t>(whole);
      windows.output = pass.output + place;
      kernel_->filterWindows(windows);
      period += whole;
    } else {
      short samples[kPolyphaseRows];
      windows.count = 1;
      windows.output = samples;
      kernel_->filterWindows(windows);
      const std::int64_t first = std::max<std::int64_t>(0, -place);
      const std::int64_t end = std::min(rowCount, pass.count - place);
      std::copy(samples + first, samples + end, pass.output + place + first);
      ++period;
    }
  }
}

}  // namespace Quorvex
