// One channel of a resampled stream.
#include "pipeline/single_channel_resampler.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>

namespace Quorvex {
namespace {

constexpr int kBufferSamples = 4000;
constexpr double kRollOff = 0.95;
constexpr double kKaiserBeta = 9.0;
constexpr double kNormalisation = 0.98;  // keeps the overshoot of loud passages from clipping
constexpr double kZeroCrossings = 32;    // on either side, of the lower of the two frequencies

// Samples are moved out in multiples of the filter's step, so up to a step more of them stay.
constexpr auto kStep = static_cast<int>(kPolyphaseStep);
constexpr int kCapacity = kBufferSamples + kStep;

// No more input than this is made room for at once.
constexpr std::size_t kMostReserved = std::size_t{1} << 20;

}  // namespace

QVERRORCODE_TAG InitialiseResampling(PolyphaseFilter& filter, int inputFrequency,
                                     int outputFrequency) noexcept {
  if (inputFrequency < 1 || outputFrequency < 1) return QVERR_BAD_STATE;
  const double factor = static_cast<double>(outputFrequency) / inputFrequency;
  const double history = 1 + std::trunc(kZeroCrossings * std::max(1.0, 1.0 / factor));
  // A pass keeps twice the history, so that nothing would ever be consumed.
  if (2 * history >= kBufferSamples) return QVERR_BAD_STATE;
  PolyphaseDesign design;
  design.inputFrequency = inputFrequency;
  design.outputFrequency = outputFrequency;
  design.length = 2 * static_cast<int>(history) - 2;
  design.rollOff = kRollOff;
  design.kaiserBeta = kKaiserBeta;
  design.hint = PolyphaseHint::kFast;
  return filter.Initialise(design);
}

QVERRORCODE_TAG SingleChannelResampler::Initialise(const PolyphaseFilter& filter) noexcept {
  constexpr std::size_t kMargin = PolyphaseFilter::kMargin;
  constexpr std::size_t kAlignment = kPolyphaseStep * sizeof(float);
  filter_ = &filter;
  history_ = static_cast<int>(filter.Half()) + 1;
  filled_ = history_;
  time_ = history_;
  const auto history = static_cast<std::size_t>(history_);
  // `history` once more for the silence after the end.
  const std::size_t after = kCapacity + history + kMargin;
  memory_.SetGrowth(1, 1, false, false);
  if (!memory_.Resize(kMargin + history + after + kPolyphaseStep)) return QVERR_CREATE_FAILED;
  std::fill_n(memory_.Data(), memory_.Count(), 0.0F);
  void* begin = memory_.Data() + kMargin + history;
  std::size_t space = (after + kPolyphaseStep) * sizeof(float);
  input_ =
      static_cast<float*>(std::align(kAlignment, after * sizeof(float), begin, space)) - history;
  return QVERR_OK;
}

std::size_t SingleChannelResampler::Room() const noexcept {
  return static_cast<std::size_t>(kCapacity - filled_);
}

float* SingleChannelResampler::End() noexcept { return input_ + filled_; }

void SingleChannelResampler::Advance(std::size_t samples) noexcept {
  filled_ += static_cast<int>(samples);
}

void SingleChannelResampler::BeginOutput(std::size_t samples) noexcept {
  output_.Clear();
  const auto length = static_cast<std::int64_t>(std::min(samples, kMostReserved));
  output_.Reserve(filter_->OutputCount(length + ReadyLength(), time_));
}

// How far beyond the time the history of an output sample is there on both sides.
int SingleChannelResampler::ReadyLength() const noexcept {
  return filled_ - static_cast<int>(time_) - history_;
}

void SingleChannelResampler::Run() noexcept {
  Filter(ReadyLength());
  const int consumed = (static_cast<int>(time_ + 0.5) - history_) / kStep * kStep;
  if (consumed <= 0) return;
  std::copy(input_ + consumed, input_ + filled_, input_);
  filled_ -= consumed;
  time_ -= consumed;
}

void SingleChannelResampler::Flush() noexcept {
  std::fill_n(End(), history_, 0.0F);
  output_.Clear();
  Filter(filled_ - static_cast<int>(time_));
}

void SingleChannelResampler::Filter(int length) noexcept {
  std::size_t count = filter_->OutputCount(length, time_);
  const std::size_t before = output_.Count();
  const bool hasRoom = output_.Resize(before + count);
  filter_->Process(input_, length, kNormalisation, time_,
                   hasRoom ? output_.Data() + before : nullptr, count);
}

}  // namespace Quorvex
