// Builds the chain that a command reads, and tells which link of it failed.
#include "tools/source.h"

#include "tools/input.h"

namespace media_accessor_tool {

using namespace Quorvex;

namespace {

QVERRORCODE_TAG SelectChannels(CMediaFile& file, const SourceOptions& options) {
  if (options.channels.empty() && options.mode.empty()) return QVERR_OK;
  const int mode = options.mode == "separate" ? kChannelModeSeparate
                   : options.mode == "sum"    ? kChannelModeSum
                                              : kChannelModeAverage;
  return file.SelectChannels(options.channels.data(), static_cast<int>(options.channels.size()),
                             mode);
}

}  // namespace

int Source::Open(const SourceOptions& options, const std::string& output) {
  const CMediaFileFactory* reader = nullptr;
  if (!FindReader(options.reader, reader)) return kWrongUsage;
  if (IsSameFile(options.input, output)) return kWrongUsage;
  name_ = options.input;
  QVERRORCODE_TAG result = OpenFile(name_, reader, file_);
  if (result == QVERR_OK) result = SelectChannels(*file_, options);
  if (result == QVERR_OK) result = BuildChain(options.rate);
  if (result == QVERR_OK) return kAllWentWell;
  ReportFailure(name_, result);
  if (result == QVERR_UNSUPPORTED_CHANNELS) {
    ReportError(name_,
                "its channels are 0 to " + std::to_string(file_->GetTrackChannelCount() - 1));
  }
  return kSomeFileFailed;
}

QVERRORCODE_TAG Source::BuildChain(int rate) {
  watched_.emplace(*file_, name_);
  if (rate == 0 || static_cast<unsigned long>(rate) == file_->GetSamplingFrequency()) {
    return QVERR_OK;
  }
  resampler_.reset(ResamplingMediaAccessor::CreateInstance());
  if (resampler_ == nullptr) return QVERR_CREATE_FAILED;
  resampler_->SetOutputSamplingFrequency(rate);
  return resampler_->SetSource(&*watched_);
}

CMediaAccessor& Source::Audio() {
  if (resampler_ != nullptr) return *resampler_;
  return *watched_;
}

bool Source::Explain(QVERRORCODE_TAG result) {
  if (watched_->Result() != QVERR_OK) {
    ReportFailure(name_, watched_->Result());
    return true;
  }
  // That two frequencies cannot be converted shows only when they are read.
  if (resampler_ == nullptr || result != QVERR_BAD_STATE) return false;
  ReportError(name_, "its " + std::to_string(file_->GetSamplingFrequency()) +
                         " Hz cannot be resampled to " +
                         std::to_string(resampler_->GetSamplingFrequency()) +
                         " Hz; 62 times lower or 1024 times higher is the most");
  return true;
}

}  // namespace media_accessor_tool
