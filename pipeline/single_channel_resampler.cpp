// One channel of a resampled stream.
#include "pipeline/single_channel_resampler.h"

#include <algorithm>
#include <cmath>

namespace Quorvex {
namespace {

// Twice the history stays below this many samples, on purpose: the input frequency is less than
// 62.46875 times the output frequency.
constexpr double kMostKept = 4000;

constexpr double kRollOff = 0.95;
constexpr double kKaiserBeta = 9.0;
constexpr double kNormalisation = 0.98;  // leaves room for what filtering adds to loud passages
constexpr double kHalfLength = 32;       // on either side, of the lower of the two frequencies

// A pass makes no more samples than this.
constexpr double kPassOutput = 16384;

}  // namespace

QVERRORCODE_TAG InitializeResampling(PolyphaseFilter& filter, int inputFrequency,
                                     int outputFrequency) noexcept {
  if (inputFrequency < 1 || outputFrequency < 1) return QVERR_BAD_STATE;
  const double factor = static_cast<double>(outputFrequency) / inputFrequency;
  const double history = 1 + std::trunc(kHalfLength * std::max(1.0, 1.0 / factor));
  if (2 * history >= kMostKept) return QVERR_BAD_STATE;
  PolyphaseDesign design;
  design.inputFrequency = inputFrequency;
  design.outputFrequency = outputFrequency;
  design.length = 2 * static_cast<int>(history) - 2;
  design.rollOff = kRollOff;
  design.kaiserBeta = kKaiserBeta;
  design.hint = PolyphaseHint::kFast;
  return filter.Initialize(design);
}

ResamplingPass PlanPass(const PolyphaseFilter& filter, int inputFrequency, int outputFrequency,
                        std::size_t most) noexcept {
  const double factor = static_cast<double>(outputFrequency) / inputFrequency;
  ResamplingPass pass;
  pass.input =
      static_cast<std::size_t>(std::clamp(kPassOutput / factor, 1.0, static_cast<double>(most)));
  const std::size_t tail = static_cast<std::size_t>(filter.Half()) + 1;
  pass.output =
      static_cast<std::size_t>(static_cast<double>(std::max(pass.input, tail)) * factor) + 2;
  return pass;
}

QVERRORCODE_TAG SingleChannelResampler::Initialize(const PolyphaseFilter& filter,
                                                   std::size_t most) noexcept {
  constexpr std::size_t kMargin = PolyphaseFilter::kMargin;
  filter_ = &filter;
  history_ = static_cast<std::size_t>(filter.Half()) + 1;
  filled_ = history_;
  time_ = static_cast<double>(history_);
  // From the first sample of the stream, which is aligned, to the end of the silence: a pass keeps
  // twice the history, and less than a step more.
  const std::size_t stream = 2 * history_ + kPolyphaseStep + most + kMargin;
  const std::size_t before = kMargin + history_;
  float* const buffer = memory_.Allocate(before + stream, before);
  if (buffer == nullptr) return QVERR_CREATE_FAILED;
  input_ = buffer + kMargin;
  return QVERR_OK;
}

// How far the filter can go: to where the history on both sides of an output sample ends.
std::int64_t SingleChannelResampler::Length(std::size_t filled) const noexcept {
  return static_cast<std::int64_t>(filled) - static_cast<std::int64_t>(time_) -
         static_cast<std::int64_t>(history_);
}

std::size_t SingleChannelResampler::OutputCount(std::size_t samples) const noexcept {
  return filter_->OutputCount(Length(filled_ + samples), time_);
}

void SingleChannelResampler::Run(std::size_t samples, short* output) noexcept {
  filled_ += samples;
  std::size_t count = 0;
  filter_->Process(input_, Length(filled_), kNormalisation, time_, output, count);
  const auto kept = static_cast<std::size_t>(std::lround(time_)) - history_;
  const std::size_t consumed = kept / kPolyphaseStep * kPolyphaseStep;
  std::copy(input_ + consumed, input_ + filled_, input_);
  filled_ -= consumed;
  time_ -= static_cast<double>(consumed);
}

std::size_t SingleChannelResampler::TailCount() const noexcept {
  return filter_->OutputCount(Length(filled_ + history_), time_);
}

void SingleChannelResampler::Flush(short* output) noexcept {
  std::fill_n(End(), history_, 0.0F);
  std::size_t count = 0;
  filter_->Process(input_, Length(filled_ + history_), kNormalisation, time_, output, count);
}

}  // namespace Quorvex
