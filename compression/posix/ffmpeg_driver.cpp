// The module, and its coders as converters.
#include "compression/posix/ffmpeg_driver.h"

#include <atomic>
#include <string>
#include <utility>

#include "compression/module_abi.h"
#include "platform/module.h"
#include "support/ft_log.h"

namespace Quorvex {
namespace {

constexpr const wchar_t* kModuleName = L"MediaAccessorFFmpeg.so";

struct LoadedModule {
  platform::Module module;
  const MediaAccessorCodingModule* functions = nullptr;
};

// False with the reason.
bool Load(const std::wstring& path, LoadedModule& loaded, std::wstring& reason) {
  if (!loaded.module.Load(path, reason)) return false;
  auto* const getFunctions =
      loaded.module.Find<MediaAccessorGetCodingModuleFunction>("MediaAccessorGetCodingModule");
  if (getFunctions != nullptr) {
    loaded.functions = getFunctions(MEDIA_ACCESSOR_CODING_MODULE_VERSION);
  }
  if (loaded.functions == nullptr) reason = L"it is of another version";
  return loaded.functions != nullptr;
}

// Null, after a line in the log, when the module cannot be used. Only success is remembered, since
// what failed once may be there later.
const MediaAccessorCodingModule* CodingModule() {
  static std::atomic<const LoadedModule*> kept = nullptr;
  const LoadedModule* known = kept.load(std::memory_order_acquire);
  if (known != nullptr) return known->functions;
  const std::wstring path = platform::OwnModuleDirectory() + kModuleName;
  auto loaded = std::make_unique<LoadedModule>();
  std::wstring reason;
  if (!Load(path, *loaded, reason)) {
    LibraryLog().Write((path + L" cannot be used: " + reason).c_str());
    return nullptr;
  }
  // Of threads that come at once, one keeps what it found, for ever.
  if (kept.compare_exchange_strong(known, loaded.get())) known = loaded.release();
  return known->functions;
}

MediaAccessorCoding ToCoding(const WaveFormat& format) {
  return {.tag = format.tag,
          .channels = format.channels,
          .samplesPerSecond = format.samplesPerSecond,
          .averageBytesPerSecond = format.averageBytesPerSecond,
          .blockAlign = format.blockAlign,
          .bitsPerSample = format.bitsPerSample,
          .extra = format.extra.data(),
          .extraBytes = format.extra.size()};
}

WaveFormat ToFormat(const MediaAccessorCoding& coding) {
  return {.tag = static_cast<std::uint16_t>(coding.tag),
          .channels = static_cast<std::uint16_t>(coding.channels),
          .samplesPerSecond = coding.samplesPerSecond,
          .averageBytesPerSecond = coding.averageBytesPerSecond,
          .blockAlign = static_cast<std::uint16_t>(coding.blockAlign),
          .bitsPerSample = static_cast<std::uint16_t>(coding.bitsPerSample),
          .extra = {coding.extra, coding.extra + coding.extraBytes}};
}

MediaAccessorConvertExtent ToModule(ConvertExtent extent) {
  switch (extent) {
    case ConvertExtent::kWholeBlocks:
      return MEDIA_ACCESSOR_CONVERT_WHOLE_BLOCKS;
    case ConvertExtent::kAnything:
      return MEDIA_ACCESSOR_CONVERT_ANYTHING;
    default:
      return MEDIA_ACCESSOR_CONVERT_END;
  }
}

class FFmpegConverter final : public Converter {
 public:
  FFmpegConverter(const MediaAccessorCodingModule& module, MediaAccessorCoder* coder)
      : module_(module), coder_(coder) {}
  ~FFmpegConverter() override { module_.close(coder_); }
  FFmpegConverter(const FFmpegConverter&) = delete;
  FFmpegConverter& operator=(const FFmpegConverter&) = delete;

  std::size_t OutputBytes(std::size_t sourceBytes) const noexcept override {
    return module_.outputBytes(coder_, sourceBytes);
  }
  bool Convert(std::span<const unsigned char> source, ConvertExtent extent,
               std::span<unsigned char> output, std::size_t& used,
               std::size_t& produced) noexcept override {
    return module_.convert(coder_, source.data(), source.size(), ToModule(extent), output.data(),
                           output.size(), &used, &produced) != 0;
  }

 private:
  const MediaAccessorCodingModule& module_;
  MediaAccessorCoder* const coder_;  // owned
};

class Driver final : public CompressionDriver {
 public:
  Suggestion Suggest(const WaveFormat& source, WaveFormat& target, unsigned fields) const override {
    if ((fields & kSuggestTag) == 0 || (source.tag == kWaveTagPCM) == (target.tag == kWaveTagPCM)) {
      return Suggestion::kNotPossible;
    }
    return target.tag == kWaveTagPCM ? SuggestDecoding(source, target, fields)
                                     : SuggestEncoding(source, target, fields);
  }

  std::unique_ptr<Converter> Open(const WaveFormat& source,
                                  const WaveFormat& target) const override;

 private:
  Suggestion SuggestDecoding(const WaveFormat& source, WaveFormat& target, unsigned fields) const;
  static Suggestion SuggestEncoding(const WaveFormat& source, WaveFormat& target, unsigned fields);
};

// Whether a decoder is there is only known when it is open.
Suggestion Driver::SuggestDecoding(const WaveFormat& source, WaveFormat& target,
                                   unsigned fields) const {
  const WaveFormat decoded = PCM16Format(source.channels, source.samplesPerSecond);
  WaveFormat suggested = target;
  if (!CompleteSuggestion(decoded, suggested, fields)) return Suggestion::kNotPossible;
  if (CodingModule() == nullptr) return Suggestion::kFailed;
  if (Open(source, decoded) == nullptr) return Suggestion::kNotPossible;
  target = std::move(suggested);
  return Suggestion::kMade;
}

Suggestion Driver::SuggestEncoding(const WaveFormat& source, WaveFormat& target, unsigned fields) {
  if (!IsPCM16(source)) return Suggestion::kNotPossible;
  const MediaAccessorCodingModule* const module = CodingModule();
  if (module == nullptr) return Suggestion::kFailed;
  MediaAccessorCoding coding = ToCoding(source);
  coding.tag = target.tag;
  const bool isMade = module->completeEncoding(&coding) != 0 &&
                      CompleteSuggestion(ToFormat(coding), target, fields);
  return isMade ? Suggestion::kMade : Suggestion::kNotPossible;
}

std::unique_ptr<Converter> Driver::Open(const WaveFormat& source, const WaveFormat& target) const {
  const bool isDecoding = source.tag != kWaveTagPCM && IsPCM16(target);
  const bool isEncoding = IsPCM16(source) && target.tag != kWaveTagPCM;
  const bool isPossible = (isDecoding || isEncoding) && source.channels == target.channels &&
                          source.samplesPerSecond == target.samplesPerSecond;
  const auto* const module = isPossible ? CodingModule() : nullptr;
  if (module == nullptr) return nullptr;
  const MediaAccessorCoding coding = ToCoding(isDecoding ? source : target);
  MediaAccessorCoder* const coder =
      isDecoding ? module->openDecoder(&coding) : module->openEncoder(&coding);
  if (coder == nullptr) return nullptr;
  try {
    return std::make_unique<FFmpegConverter>(*module, coder);
  } catch (...) {
    module->close(coder);
    throw;
  }
}

}  // namespace

const CompressionDriver& FFmpegDriver() {
  static const Driver driver;
  return driver;
}

}  // namespace Quorvex
