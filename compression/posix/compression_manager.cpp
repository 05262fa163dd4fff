// The manager as a list of drivers, asked in turn: the first that can do it, does it.
#include "compression/compression_manager.h"

#include <utility>

#include "compression/posix/compression_driver.h"
#include "compression/posix/ffmpeg_driver.h"
#include "support/cft_array.h"
#include "support/recursive_lock.h"

namespace Quorvex {
namespace {

constexpr int kLockLimit = 5000;  // milliseconds

RecursiveLock& Lock() {
  static constinit RecursiveLock lock;
  return lock;
}

std::vector<const CompressionDriver*>& Drivers() {
  static std::vector<const CompressionDriver*> drivers = {&PCMDriver(), &IMAADPCMDriver(),
                                                          &MicrosoftADPCMDriver(), &FFmpegDriver()};
  return drivers;
}

}  // namespace

void AddCompressionDriver(const CompressionDriver& driver) {
  const RecursiveLockGuard guard(Lock(), RecursiveLock::kWaitForever);
  Drivers().insert(Drivers().begin(), &driver);
}

bool CompleteSuggestion(const WaveFormat& offered, WaveFormat& target, unsigned fields) {
  const auto differs = [fields](SuggestFields field, std::uint32_t given, std::uint32_t offer) {
    return (fields & field) != 0 && given != offer;
  };
  if (differs(kSuggestTag, target.tag, offered.tag) ||
      differs(kSuggestChannels, target.channels, offered.channels) ||
      differs(kSuggestSamplesPerSecond, target.samplesPerSecond, offered.samplesPerSecond) ||
      differs(kSuggestBitsPerSample, target.bitsPerSample, offered.bitsPerSample)) {
    return false;
  }
  target = offered;
  return true;
}

Suggestion SuggestFormat(const WaveFormat& source, WaveFormat& target, unsigned fields) {
  if (source.channels == 0 || source.samplesPerSecond == 0) return Suggestion::kFailed;
  const RecursiveLockGuard guard(Lock(), kLockLimit);
  if (!guard) return Suggestion::kFailed;
  Suggestion result = Suggestion::kNotPossible;
  for (const CompressionDriver* const driver : Drivers()) {
    const Suggestion answer = driver->Suggest(source, target, fields);
    if (answer == Suggestion::kMade) return answer;
    if (answer == Suggestion::kFailed) result = answer;
  }
  return result;
}

struct CompressionStream::State {
  std::unique_ptr<Converter> converter;
  std::span<unsigned char> source;
  CFTarray<unsigned char> output;
};

CompressionStream::CompressionStream(std::unique_ptr<State> state) noexcept
    : state_(std::move(state)) {}
CompressionStream::~CompressionStream() = default;

std::unique_ptr<CompressionStream> CompressionStream::Open(const WaveFormat& sourceFormat,
                                                           const WaveFormat& targetFormat,
                                                           std::span<unsigned char> source) {
  auto state = std::make_unique<State>();
  const RecursiveLockGuard guard(Lock(), kLockLimit);
  if (!guard) return nullptr;
  for (const CompressionDriver* const driver : Drivers()) {
    state->converter = driver->Open(sourceFormat, targetFormat);
    if (state->converter != nullptr) break;
  }
  if (state->converter == nullptr ||
      !state->output.Resize(state->converter->OutputBytes(source.size()))) {
    return nullptr;
  }
  state->source = source;
  return std::unique_ptr<CompressionStream>(new CompressionStream(std::move(state)));
}

bool CompressionStream::Convert(std::size_t bytes, ConvertExtent extent, std::size_t& used,
                                std::size_t& produced) noexcept {
  used = 0;
  produced = 0;
  return state_->converter->Convert(state_->source.first(bytes), extent, Output(), used, produced);
}

std::span<unsigned char> CompressionStream::Output() noexcept {
  return {state_->output.Data(), state_->output.Count()};
}

}  // namespace Quorvex
