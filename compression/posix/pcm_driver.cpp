// PCM of 8, 16, 24, 32 and 64 bits, floating point of 32 and 64, A-law and mu-law to 16-bit PCM, of
// as many channels or fewer; and 16-bit PCM to A-law and mu-law.
#include <algorithm>
#include <array>
#include <cstring>

#include "compression/posix/compression_driver.h"
#include "compression/posix/pcm_samples.h"
#include "support/g711.h"

namespace Quorvex {
namespace {

constexpr std::size_t kLargestFrame = 65'535;  // bytes: what a block align can say
constexpr std::size_t kWidestSample = 8;       // bytes

void ExpandALaw(const unsigned char* codes, std::size_t count, short* samples) noexcept {
  ExpandG711(WaveLaw::kALaw, codes, count, samples);
}
void ExpandMuLaw(const unsigned char* codes, std::size_t count, short* samples) noexcept {
  ExpandG711(WaveLaw::kMuLaw, codes, count, samples);
}

// How samples of one kind become 16-bit ones.
struct Coding {
  using Function = void (*)(const unsigned char* input, std::size_t count, short* samples) noexcept;

  std::uint16_t tag;
  std::size_t width;  // bytes of a sample
  Function convert;
};

constexpr Coding kCodings[] = {
    {kWaveTagPCM, 1, ConvertUnsigned8},        {kWaveTagPCM, 2, ConvertIntegers<2>},
    {kWaveTagPCM, 3, ConvertIntegers<3>},      {kWaveTagPCM, 4, ConvertIntegers<4>},
    {kWaveTagPCM, 8, ConvertIntegers<8>},      {kWaveTagFloat, 4, ConvertFloats<float>},
    {kWaveTagFloat, 8, ConvertFloats<double>}, {kWaveTagALaw, 1, ExpandALaw},
    {kWaveTagMuLaw, 1, ExpandMuLaw},
};

bool IsLaw(std::uint16_t tag) { return tag == kWaveTagALaw || tag == kWaveTagMuLaw; }

// Null for what is not here. The width comes from the bits per sample, rounded up to bytes: a block
// align may say anything. The laws have one width, whatever the file says.
const Coding* FindCoding(const WaveFormat& format) {
  const std::size_t width = IsLaw(format.tag) ? 1 : (std::size_t{format.bitsPerSample} + 7) / 8;
  const auto* const found = std::find_if(
      std::begin(kCodings), std::end(kCodings),
      [&](const Coding& coding) { return coding.tag == format.tag && coding.width == width; });
  if (found == std::end(kCodings) || width * format.channels > kLargestFrame) return nullptr;
  return found;
}

// Decoding, to all channels or the first ones.
class Decoder final : public Converter {
 public:
  Decoder(const Coding& coding, std::size_t sourceChannels, std::size_t targetChannels)
      : coding_(coding), sourceChannels_(sourceChannels), targetChannels_(targetChannels) {}

  std::size_t OutputBytes(std::size_t sourceBytes) const noexcept override {
    return sourceBytes / FrameBytes() * targetChannels_ * sizeof(short);
  }

  bool Convert(std::span<const unsigned char> source, ConvertExtent,
               std::span<unsigned char> output, std::size_t& used,
               std::size_t& produced) noexcept override {
    const std::size_t frames = source.size() / FrameBytes();
    auto* const samples = reinterpret_cast<short*>(output.data());
    if (sourceChannels_ == targetChannels_) {
      coding_.convert(source.data(), frames * sourceChannels_, samples);
    } else {
      ConvertFirstChannels(source.data(), frames, samples);
    }
    used = frames * FrameBytes();
    produced = frames * targetChannels_ * sizeof(short);
    return true;
  }

 private:
  std::size_t FrameBytes() const { return coding_.width * sourceChannels_; }

  // Gathers the samples that are wanted, some frames at a time.
  void ConvertFirstChannels(const unsigned char* source, std::size_t frames,
                            short* samples) const noexcept {
    constexpr std::size_t kGatheredSamples = 512;
    std::array<unsigned char, kGatheredSamples * kWidestSample> gathered;
    const std::size_t wanted = coding_.width * targetChannels_;  // bytes of a frame
    const std::size_t step = kGatheredSamples / targetChannels_;
    while (frames > 0) {
      const std::size_t count = std::min(frames, step);
      for (std::size_t f = 0; f < count; ++f) {
        std::memcpy(gathered.data() + f * wanted, source + f * FrameBytes(), wanted);
      }
      coding_.convert(gathered.data(), count * targetChannels_, samples);
      source += count * FrameBytes();
      samples += count * targetChannels_;
      frames -= count;
    }
  }

  const Coding& coding_;
  const std::size_t sourceChannels_;
  const std::size_t targetChannels_;
};

class Encoder final : public Converter {
 public:
  explicit Encoder(WaveLaw law) : law_(law) {}

  std::size_t OutputBytes(std::size_t sourceBytes) const noexcept override {
    return sourceBytes / sizeof(short);
  }

  bool Convert(std::span<const unsigned char> source, ConvertExtent,
               std::span<unsigned char> output, std::size_t& used,
               std::size_t& produced) noexcept override {
    produced = source.size() / sizeof(short);
    used = produced * sizeof(short);
    CompressG711(law_, reinterpret_cast<const short*>(source.data()), produced, output.data());
    return true;
  }

 private:
  const WaveLaw law_;
};

// A format of one byte a sample.
WaveFormat LawFormat(std::uint16_t tag, const WaveFormat& source) {
  return {.tag = tag,
          .channels = source.channels,
          .samplesPerSecond = source.samplesPerSecond,
          .averageBytesPerSecond = source.samplesPerSecond * source.channels,
          .blockAlign = source.channels,
          .bitsPerSample = 8,
          .extra = {}};
}

// Gathering has room for a frame of so many channels.
constexpr std::uint16_t kMostFirstChannels = 2;

std::uint16_t TargetChannels(const WaveFormat& source, const WaveFormat& target, unsigned fields) {
  const bool areFewer = (fields & kSuggestChannels) != 0 && target.channels >= 1 &&
                        target.channels <= std::min(kMostFirstChannels, source.channels);
  return areFewer ? target.channels : source.channels;
}

class Driver final : public CompressionDriver {
 public:
  Suggestion Suggest(const WaveFormat& source, WaveFormat& target, unsigned fields) const override {
    const Coding* const coding = FindCoding(source);
    if (coding == nullptr) return Suggestion::kNotPossible;
    const bool encodes = IsPCM16(source) && (fields & kSuggestTag) != 0 && IsLaw(target.tag);
    const WaveFormat offered =
        encodes ? LawFormat(target.tag, source)
                : PCM16Format(TargetChannels(source, target, fields), source.samplesPerSecond);
    // 16 bits of so many 8-bit samples may be more than a block align can say.
    if (offered.channels * sizeof(short) > kLargestFrame) return Suggestion::kNotPossible;
    return CompleteSuggestion(offered, target, fields) ? Suggestion::kMade
                                                       : Suggestion::kNotPossible;
  }

  std::unique_ptr<Converter> Open(const WaveFormat& source,
                                  const WaveFormat& target) const override {
    WaveFormat suggested = target;
    if (Suggest(source, suggested, kAllFields) != Suggestion::kMade) return nullptr;
    if (IsLaw(target.tag)) return std::make_unique<Encoder>(static_cast<WaveLaw>(target.tag));
    return std::make_unique<Decoder>(*FindCoding(source), source.channels, target.channels);
  }
};

}  // namespace

const CompressionDriver& PCMDriver() {
  static const Driver driver;
  return driver;
}

}  // namespace Quorvex
