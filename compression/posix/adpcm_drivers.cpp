// The two ADPCM codings as drivers: 16-bit PCM of as many channels.
#include <algorithm>
#include <optional>

#include "compression/posix/adpcm_blocks.h"
#include "compression/posix/compression_driver.h"
#include "support/header_reader.h"

namespace Quorvex {
namespace {

constexpr int kBits = 4;

// Fields of what follows the format record.
std::size_t Extra16(const WaveFormat& format, std::size_t offset) {
  if (format.extra.size() < offset + 2) return 0;
  return LittleEndian16(format.extra.data() + offset);
}

constexpr std::size_t kSamplesPerBlock = 0;  // offsets there
constexpr std::size_t kPredictorCount = 2;
constexpr std::size_t kPredictors = 4;

// Nothing for a format that makes no sense.
template <class Blocks>
std::optional<Blocks> MakeBlocks(const WaveFormat& format);

template <>
std::optional<IMABlocks> MakeBlocks(const WaveFormat& format) {
  return IMABlocks(format.channels);
}

template <>
std::optional<MicrosoftADPCMBlocks> MakeBlocks(const WaveFormat& format) {
  using Predictor = MicrosoftADPCMBlocks::Predictor;
  constexpr std::size_t kMostChannels = 2;
  if (format.channels > kMostChannels) return std::nullopt;
  std::vector<Predictor> predictors = MicrosoftADPCMBlocks::StandardPredictors();
  const std::size_t count = Extra16(format, kPredictorCount);
  if (count > 0 && format.extra.size() >= kPredictors + 4 * count) {
    predictors.resize(count);
    for (std::size_t i = 0; i < count; ++i) {
      predictors[i] = {static_cast<std::int16_t>(Extra16(format, kPredictors + 4 * i)),
                       static_cast<std::int16_t>(Extra16(format, kPredictors + 4 * i + 2))};
    }
  }
  return MicrosoftADPCMBlocks(format.channels, predictors);
}

template <class Blocks>
class Decoder final : public Converter {
 public:
  Decoder(const Blocks& blocks, const WaveFormat& format)
      : blocks_(blocks), channels_(format.channels), blockBytes_(format.blockAlign) {
    const std::size_t told = Extra16(format, kSamplesPerBlock);
    blockFrames_ = blocks.Frames(blockBytes_);
    if (told > 0) blockFrames_ = std::min(blockFrames_, told);
  }

  std::size_t OutputBytes(std::size_t sourceBytes) const noexcept override {
    return (sourceBytes / blockBytes_ + 1) * Bytes(blockFrames_);
  }

  bool Convert(std::span<const unsigned char> source, ConvertExtent extent,
               std::span<unsigned char> output, std::size_t& used,
               std::size_t& produced) noexcept override {
    auto* const samples = reinterpret_cast<short*>(output.data());
    const std::size_t count = source.size() / blockBytes_;
    if (count > 0) {
      blocks_.Decode(source.data(), count, blockBytes_, blockFrames_, samples);
      used = count * blockBytes_;
      produced = Bytes(count * blockFrames_);
    } else if (extent == ConvertExtent::kAnything && source.size() >= blocks_.HeaderBytes()) {
      // The part of a block at the end of a file.
      const std::size_t frames = std::min(blocks_.Frames(source.size()), blockFrames_);
      blocks_.Decode(source.data(), 1, source.size(), frames, samples);
      used = source.size();
      produced = Bytes(frames);
    }
    return true;
  }

 private:
  std::size_t Bytes(std::size_t frames) const { return frames * channels_ * sizeof(short); }

  const Blocks blocks_;
  const std::size_t channels_;
  const std::size_t blockBytes_;
  std::size_t blockFrames_ = 0;
};

template <class Blocks, WaveTag kTag>
class Driver final : public CompressionDriver {
 public:
  Suggestion Suggest(const WaveFormat& source, WaveFormat& target, unsigned fields) const override {
    const bool isMade =
        BlocksOf(source) &&
        CompleteSuggestion(PCM16Format(source.channels, source.samplesPerSecond), target, fields);
    return isMade ? Suggestion::kMade : Suggestion::kNotPossible;
  }

  std::unique_ptr<Converter> Open(const WaveFormat& source,
                                  const WaveFormat& target) const override {
    WaveFormat suggested = target;
    if (Suggest(source, suggested, kAllFields) != Suggestion::kMade) return nullptr;
    return std::make_unique<Decoder<Blocks>>(*BlocksOf(source), source);
  }

 private:
  // Nothing for a format that is not this coding, or makes no sense.
  static std::optional<Blocks> BlocksOf(const WaveFormat& format) {
    if (format.tag != kTag || format.bitsPerSample != kBits) return std::nullopt;
    const std::optional<Blocks> blocks = MakeBlocks<Blocks>(format);
    if (!blocks || format.blockAlign < blocks->HeaderBytes()) return std::nullopt;
    return blocks;
  }
};

}  // namespace

const CompressionDriver& IMAADPCMDriver() {
  static const Driver<IMABlocks, kWaveTagIMAADPCM> driver;
  return driver;
}

const CompressionDriver& MicrosoftADPCMDriver() {
  static const Driver<MicrosoftADPCMBlocks, kWaveTagMicrosoftADPCM> driver;
  return driver;
}

}  // namespace Quorvex
