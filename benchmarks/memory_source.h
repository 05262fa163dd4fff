// An accessor that hands out samples in memory, block by block, without copying them.
#pragma once

#include <MediaAccessor/media_accessor.h>

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace benchmarks {

class MemorySource final : public Quorvex::CMediaAccessor {
 public:
  struct Format {
    unsigned long frequency;  ///< Hz
    unsigned long channels;
    unsigned long blockFrames;
  };

  /// @param isEndless  begins again where it would end.
  MemorySource(const Format& format, std::vector<short> samples, bool isEndless)
      : format_(format), samples_(std::move(samples)), isEndless_(isEndless) {}

  unsigned long GetSamplingFrequency() const override { return format_.frequency; }
  unsigned long GetChannelCount() const override { return format_.channels; }

  Quorvex::QVERRORCODE_TAG ReadBlock(const short*& samples, unsigned long& frames, void*) override {
    const std::size_t total = samples_.size() / format_.channels;
    if (isEndless_ && done_ == total) done_ = 0;
    samples = samples_.data() + done_ * format_.channels;
    const std::size_t taken = std::min<std::size_t>(total - done_, format_.blockFrames);
    frames = static_cast<unsigned long>(taken);
    done_ += taken;
    return Quorvex::QVERR_OK;
  }

  using CMediaAccessor::GetDescription;
  unsigned long GetDescription(wchar_t*, unsigned long) const override { return 0; }

 private:
  Format format_;
  std::vector<short> samples_;
  bool isEndless_;
  std::size_t done_ = 0;  // frames
};

}  // namespace benchmarks
