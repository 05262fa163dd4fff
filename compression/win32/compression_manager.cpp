// The system's audio compression manager.
//
// Its drivers take a format record at its word: they divide by its fields and step through blocks
// by them. So a record is looked at here, field by field, before any driver sees it, and what
// follows from other fields is computed instead of believed.
#include "compression/compression_manager.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

#include "platform/win32/error_mode_guard.h"
#include "platform/win32/system_library.h"
#include "platform/win32/windows_api.h"
#include "support/header_reader.h"
#include "support/recursive_lock.h"

#include <mmreg.h>
#include <mmsystem.h>
#include <msacm.h>

namespace Quorvex {
namespace {

using platform::ErrorModeGuard;

constexpr int kLockMilliseconds = 5000;
constexpr DWORD kLargestOutput = 64U << 20;  // bytes; more than any coding makes of 128 KiB

// Beyond these a record is nonsense; below, drivers compute in 32 bits without a wrap.
constexpr std::uint32_t kLargestFrequency = 1U << 24;  // in hertz
constexpr std::uint32_t kLargestAverage = 1U << 21;    // bytes a second, of a compressed coding
constexpr std::size_t kExtensibleBytes = sizeof(WAVEFORMATEXTENSIBLE) - sizeof(WAVEFORMATEX);

static_assert(kSuggestTag == ACM_FORMATSUGGESTF_WFORMATTAG);
static_assert(kSuggestChannels == ACM_FORMATSUGGESTF_NCHANNELS);
static_assert(kSuggestSamplesPerSecond == ACM_FORMATSUGGESTF_NSAMPLESPERSEC);
static_assert(kSuggestBitsPerSample == ACM_FORMATSUGGESTF_WBITSPERSAMPLE);

// The whole library's turn at the manager.
constinit RecursiveLock managerLock;

struct Acm {
  bool Load() noexcept {
    using platform::FindFunction;
    const HMODULE library = platform::LoadSystemLibrary(L"msacm32.dll");
    if (!FindFunction(library, "acmMetrics", metrics) ||
        !FindFunction(library, "acmFormatSuggest", formatSuggest) ||
        !FindFunction(library, "acmStreamOpen", streamOpen) ||
        !FindFunction(library, "acmStreamClose", streamClose) ||
        !FindFunction(library, "acmStreamSize", streamSize) ||
        !FindFunction(library, "acmStreamPrepareHeader", streamPrepareHeader) ||
        !FindFunction(library, "acmStreamUnprepareHeader", streamUnprepareHeader) ||
        !FindFunction(library, "acmStreamConvert", streamConvert)) {
      return false;
    }
    const ErrorModeGuard guard;
    return metrics(nullptr, ACM_METRIC_MAX_SIZE_FORMAT, &largestFormat) == MMSYSERR_NOERROR;
  }

  decltype(::acmMetrics)* metrics = nullptr;
  decltype(::acmFormatSuggest)* formatSuggest = nullptr;
  decltype(::acmStreamOpen)* streamOpen = nullptr;
  decltype(::acmStreamClose)* streamClose = nullptr;
  decltype(::acmStreamSize)* streamSize = nullptr;
  decltype(::acmStreamPrepareHeader)* streamPrepareHeader = nullptr;
  decltype(::acmStreamUnprepareHeader)* streamUnprepareHeader = nullptr;
  decltype(::acmStreamConvert)* streamConvert = nullptr;
  DWORD largestFormat = 0;  // bytes of the largest record that a driver suggests
};

// A format record as the system has it: WAVEFORMATEX and the bytes that follow it, then zeros, for
// drivers that do not look how many they are.
class Record {
 public:
  Record(const WaveFormat& format, std::size_t room)
      : bytes_(std::max(sizeof(WAVEFORMATEX) + format.extra.size(), room)) {
    WAVEFORMATEX fields{};
    fields.wFormatTag = format.tag;
    fields.nChannels = format.channels;
    fields.nSamplesPerSec = format.samplesPerSecond;
    fields.nAvgBytesPerSec = format.averageBytesPerSecond;
    fields.nBlockAlign = format.blockAlign;
    fields.wBitsPerSample = format.bitsPerSample;
    if (format.tag != kWaveTagPCM) fields.cbSize = static_cast<WORD>(format.extra.size());
    std::memcpy(bytes_.data(), &fields, sizeof fields);
    std::copy(format.extra.begin(), format.extra.end(), bytes_.begin() + sizeof fields);
  }

  WAVEFORMATEX* Fields() noexcept { return reinterpret_cast<WAVEFORMATEX*>(bytes_.data()); }
  DWORD Size() const noexcept { return static_cast<DWORD>(bytes_.size()); }

  WaveFormat ToFormat() const {
    WAVEFORMATEX fields{};
    std::memcpy(&fields, bytes_.data(), sizeof fields);
    const std::size_t extra =
        fields.wFormatTag == kWaveTagPCM
            ? 0
            : std::min<std::size_t>(fields.cbSize, bytes_.size() - sizeof fields);
    const auto begin = bytes_.begin() + sizeof fields;
    return {.tag = fields.wFormatTag,
            .channels = fields.nChannels,
            .samplesPerSecond = fields.nSamplesPerSec,
            .averageBytesPerSecond = fields.nAvgBytesPerSec,
            .blockAlign = fields.nBlockAlign,
            .bitsPerSample = fields.wBitsPerSample,
            .extra = {begin, begin + static_cast<std::ptrdiff_t>(extra)}};
  }

 private:
  std::vector<unsigned char> bytes_;
};

unsigned ExtraWord(const WaveFormat& format, std::size_t index) {
  return LittleEndian16(format.extra.data() + 2 * index);
}

// Frames in a block of one of the ADPCM codings, which begins with some bytes and some frames for
// each channel and goes on with 4 bits a sample. 0: that is no block.
unsigned AdpcmFrames(const WaveFormat& format, unsigned headerBytes, unsigned headerFrames) {
  const unsigned header = headerBytes * format.channels;
  if (format.bitsPerSample != 4 || format.blockAlign < header) return 0;
  return (format.blockAlign - header) * 2 / format.channels + headerFrames;
}

// The frames that a block holds, for the codings whose drivers believe what the record says about
// it. 0: the record contradicts itself or lacks something.
unsigned FramesPerBlock(const WaveFormat& format) {
  const std::size_t extra = format.extra.size();
  const unsigned stated = extra >= 2 ? ExtraWord(format, 0) : 0;
  unsigned frames = 0;
  switch (format.tag) {
    case kWaveTagPCM:
    case kWaveTagALaw:
    case kWaveTagMuLaw:
      return format.blockAlign == format.channels * ((format.bitsPerSample + 7U) / 8) ? 1 : 0;
    case kWaveTagMicrosoftADPCM: {
      // Two bytes for the frames, two for the number of coefficient pairs, at least the seven that
      // every file has, and those.
      constexpr unsigned kStandardPairs = 7;
      const unsigned pairs = extra >= 4 ? ExtraWord(format, 1) : 0;
      if (pairs < kStandardPairs || extra < 4 + std::size_t{4} * pairs) return 0;
      frames = AdpcmFrames(format, 7, 2);
      break;
    }
    case kWaveTagIMAADPCM:
      // Behind the header, channels take turns with four bytes each.
      if (format.blockAlign % (4U * format.channels) != 0) return 0;
      frames = AdpcmFrames(format, 4, 1);
      break;
    case kWaveTagGSM610:
      frames = format.blockAlign == 65 && format.channels == 1 ? 320 : 0;
      break;
    default:
      return 0;
  }
  return frames == stated ? frames : 0;
}

bool IsChecked(std::uint16_t tag) {
  return tag == kWaveTagPCM || tag == kWaveTagALaw || tag == kWaveTagMuLaw ||
         tag == kWaveTagMicrosoftADPCM || tag == kWaveTagIMAADPCM || tag == kWaveTagGSM610;
}

// Other codings can have an average that only their writer knows. Some programs write none for a
// variable rate, and drivers divide by the bytes that it leaves for a block. Outside any sense, it
// becomes a bit a sample, which is a fair guess for the size of buffers.
void MendAverage(WaveFormat& format) {
  const std::uint32_t least = std::max(1U, format.samplesPerSecond / 64);
  if (format.averageBytesPerSecond < least || format.averageBytesPerSecond > kLargestAverage) {
    format.averageBytesPerSecond = std::max(1U, format.samplesPerSecond / 8);
  }
}

// Whether a driver may see the record. For the codings that are checked, the average is set to what
// it must be.
bool MakeSafe(WaveFormat& format) {
  if (format.channels == 0 || format.samplesPerSecond == 0 ||
      format.samplesPerSecond > kLargestFrequency || format.blockAlign == 0 ||
      format.extra.size() > std::numeric_limits<WORD>::max()) {
    return false;
  }
  if (format.tag == kWaveTagExtensible && format.extra.size() < kExtensibleBytes) return false;
  if (!IsChecked(format.tag)) {
    MendAverage(format);
    return true;
  }
  const unsigned frames = FramesPerBlock(format);
  if (frames == 0) return false;
  const std::uint64_t average = std::uint64_t{format.samplesPerSecond} * format.blockAlign / frames;
  if (average == 0 || average > std::numeric_limits<std::uint32_t>::max()) return false;
  format.averageBytesPerSecond = static_cast<std::uint32_t>(average);
  return true;
}

}  // namespace

Suggestion SuggestFormat(const WaveFormat& source, WaveFormat& target, unsigned fields) {
  WaveFormat safe = source;
  if (!MakeSafe(safe)) return Suggestion::kFailed;
  const RecursiveLockGuard lock(managerLock, kLockMilliseconds);
  if (!lock) return Suggestion::kFailed;
  const Acm* const acm = platform::SystemFunctions<Acm>();
  if (acm == nullptr) return Suggestion::kFailed;
  Record from(safe, acm->largestFormat);
  Record to(target, acm->largestFormat);
  const ErrorModeGuard guard;
  const MMRESULT result =
      acm->formatSuggest(nullptr, from.Fields(), to.Fields(), to.Size(), fields);
  if (result == ACMERR_NOTPOSSIBLE) return Suggestion::kNotPossible;
  if (result != MMSYSERR_NOERROR) return Suggestion::kFailed;
  WaveFormat suggested = to.ToFormat();
  if (!MakeSafe(suggested)) return Suggestion::kFailed;
  target = std::move(suggested);
  return Suggestion::kMade;
}

struct CompressionStream::State {
  State(const Acm& functions, const WaveFormat& sourceFormat) : acm(functions) {
    if (sourceFormat.tag == kWaveTagMicrosoftADPCM) {
      predictorStep = sourceFormat.blockAlign;
      predictorCount = sourceFormat.channels;
    }
  }

  ~State() {
    if (isPrepared) {
      header.cbSrcLength = static_cast<DWORD>(source.size());
      header.cbDstLength = static_cast<DWORD>(output.size());
      acm.streamUnprepareHeader(stream, &header, 0);
    }
    if (stream != nullptr) acm.streamClose(stream, 0);
  }
  State(const State&) = delete;
  State& operator=(const State&) = delete;

  bool Open(Record& from, Record& to) {
    return acm.streamOpen(&stream, nullptr, from.Fields(), to.Fields(), nullptr, 0, 0,
                          ACM_STREAMOPENF_NONREALTIME) == MMSYSERR_NOERROR;
  }

  bool Prepare(std::span<unsigned char> buffer) {
    DWORD size = 0;
    if (buffer.size() > kLargestOutput ||
        acm.streamSize(stream, static_cast<DWORD>(buffer.size()), &size, ACM_STREAMSIZEF_SOURCE) !=
            MMSYSERR_NOERROR ||
        size == 0 || size > kLargestOutput) {
      return false;
    }
    source = buffer;
    output.resize(size);
    header.cbStruct = sizeof header;
    header.pbSrc = source.data();
    header.cbSrcLength = static_cast<DWORD>(source.size());
    header.pbDst = output.data();
    header.cbDstLength = size;
    isPrepared = acm.streamPrepareHeader(stream, &header, 0) == MMSYSERR_NOERROR;
    return isPrepared;
  }

  // Microsoft ADPCM: each block begins with the number of a coefficient pair for each channel,
  // which drivers use as an index without looking, or with an assertion.
  bool HasValidPredictors(std::size_t bytes) const noexcept {
    constexpr unsigned char kLastPredictor = 6;
    if (predictorStep == 0) return true;
    for (std::size_t block = 0; block < bytes; block += predictorStep) {
      const auto predictors = source.subspan(block, std::min(predictorCount, bytes - block));
      if (std::any_of(predictors.begin(), predictors.end(),
                      [](unsigned char number) { return number > kLastPredictor; })) {
        return false;
      }
    }
    return true;
  }

  const Acm& acm;
  HACMSTREAM stream = nullptr;
  ACMSTREAMHEADER header{};
  bool isPrepared = false;
  std::span<unsigned char> source;
  std::vector<unsigned char> output;
  std::size_t predictorStep = 0;  // 0: there are none
  std::size_t predictorCount = 0;
};

CompressionStream::CompressionStream(std::unique_ptr<State> state) noexcept
    : state_(std::move(state)) {}

CompressionStream::~CompressionStream() = default;

std::unique_ptr<CompressionStream> CompressionStream::Open(const WaveFormat& sourceFormat,
                                                           const WaveFormat& targetFormat,
                                                           std::span<unsigned char> source) {
  WaveFormat safeSource = sourceFormat;
  WaveFormat safeTarget = targetFormat;
  if (!MakeSafe(safeSource) || !MakeSafe(safeTarget)) return nullptr;
  const RecursiveLockGuard lock(managerLock, kLockMilliseconds);
  if (!lock) return nullptr;
  const Acm* const acm = platform::SystemFunctions<Acm>();
  if (acm == nullptr) return nullptr;
  Record from(safeSource, acm->largestFormat);
  Record to(safeTarget, acm->largestFormat);
  const ErrorModeGuard guard;
  auto state = std::make_unique<State>(*acm, safeSource);
  if (!state->Open(from, to) || !state->Prepare(source)) return nullptr;
  return std::unique_ptr<CompressionStream>(new CompressionStream(std::move(state)));
}

bool CompressionStream::Convert(std::size_t bytes, ConvertExtent extent, std::size_t& used,
                                std::size_t& produced) noexcept {
  used = 0;
  produced = 0;
  State& state = *state_;
  if (bytes > state.source.size() || !state.HasValidPredictors(bytes)) return false;
  // A synchronous stream without an end flag holds nothing back.
  if (bytes == 0 || extent == ConvertExtent::kEnd) return true;
  ACMSTREAMHEADER& header = state.header;
  header.cbSrcLength = static_cast<DWORD>(bytes);
  header.cbSrcLengthUsed = 0;
  header.cbDstLength = static_cast<DWORD>(state.output.size());
  header.cbDstLengthUsed = 0;
  const DWORD flags =
      extent == ConvertExtent::kWholeBlocks ? DWORD{ACM_STREAMCONVERTF_BLOCKALIGN} : 0;
  if (state.acm.streamConvert(state.stream, &header, flags) != MMSYSERR_NOERROR ||
      header.cbSrcLengthUsed > bytes || header.cbDstLengthUsed > state.output.size()) {
    return false;
  }
  used = header.cbSrcLengthUsed;
  produced = header.cbDstLengthUsed;
  return true;
}

std::span<unsigned char> CompressionStream::Output() noexcept { return state_->output; }

}  // namespace Quorvex
