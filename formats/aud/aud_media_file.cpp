// What a file holds is told by a wave file's header, or else by the extension:
//
//     wave header?  yes: its tag, channels, rate and data
//                   no:  the extension; everything is data, mono
//     then          a line of the table below, which names the decoder
//
// A coding is decoded by the byte (G.711) or by speech decoders, which go by frames. Blocks are
// whole frames, so that only the last one of a file can be a part of one. The decoder fills it up
// with zeros; of what comes out, this reader keeps as much as the bytes stand for, or as the "fact"
// chunk of a wave file tells.
//
// Frames of G.723.1 tell their own length, and those of both bit rates and of silence may
// alternate: they are taken out of blocks of any bytes, and decoded one by one.
#include "formats/aud/aud_media_file.h"

#include <algorithm>
#include <array>
#include <optional>
#include <span>
#include <string_view>

#include <MediaAccessor/ipp_coder.h>

#include "formats/aud/frame_decoders.h"
#include "formats/aud/mixed_frames.h"
#include "support/built_in_media_file_factory.h"
#include "support/ft_log.h"
#include "support/g711.h"
#include "support/riff_header_probe.h"
#include "support/text.h"
#include "support/unit_media_file.h"

namespace Quorvex {
namespace {

constexpr std::size_t kBlockBytes = 4000;       // about, and at least a frame
constexpr std::uint32_t kG711Frequency = 8000;  // Hz, of files without a header
// Of mixed frames: whole ones where all have 24 or all have 20 bytes. Such a block may be much
// longer in time than in bytes.
constexpr std::size_t kMixedBlockBytes = 120;

constexpr std::wstring_view kFormatName = L"AUD/NMF/WAV/G729AB/TrueSpeech/G722/ALaw/Mulaw format";

constexpr std::uint32_t kNoTag = 0;

// What can be decoded, and where it is found. A later codec adds its line.
struct Coding {
  std::wstring_view extension;  // of raw files, in upper case; or empty
  std::uint32_t tag;            // of wave files, or kNoTag
  unsigned blockAlign;          // of wave files, for each channel: bytes of a frame
  const wchar_t* name;
  WaveLaw law;              // of G.711; kLinear: the speech decoder's
  IPPCoder::CODEC codec{};  // whose frames hold a whole number of samples a byte
  long bitRate = 0;
  bool isMixed = false;  // its frames tell their own length: mono

  bool IsFramed() const { return law == WaveLaw::kLinear; }
};

constexpr const wchar_t* kG7231Name = L"ITU-T G.723.1";

// The longest frames of G.723.1 are those at 6.3 kbit/s: its decoder takes the others, too.
constexpr Coding MixedG7231(std::uint32_t tag, unsigned blockAlign) {
  return {{}, tag, blockAlign, kG7231Name, WaveLaw::kLinear, IPPCoder::G723_1_63, 6300, true};
}

constexpr Coding kCodings[] = {
    {L"G722", kNoTag, 0, L"CCITT G.722 64 kbit/s", WaveLaw::kLinear, IPPCoder::G722, 64'000},
    {L"G729A", 0x83, 10, L"ITU-T G.729A 8 kbit/s", WaveLaw::kLinear, IPPCoder::G729A, 8000},
    // Frames of 32 bytes are another codec's, which has the first tag by right.
    MixedG7231(0x22, 20),
    MixedG7231(0x22, 24),
    MixedG7231(0x42, 20),
    MixedG7231(0x42, 24),
    {L"ALAW", 6, 1, kALawName, WaveLaw::kALaw},
    {L"MULAW", 7, 1, kMuLawName, WaveLaw::kMuLaw},
};

constexpr bool IsRaw(const Coding& coding) { return !coding.extension.empty(); }

constexpr auto kExtensions = [] {
  constexpr auto kRaw = static_cast<std::size_t>(std::ranges::count_if(kCodings, IsRaw));
  std::array<std::wstring_view, kRaw + 1> extensions;
  auto next = extensions.begin();
  for (const Coding& coding : kCodings) {
    if (IsRaw(coding)) *next++ = coding.extension;
  }
  *next = L"WAV";
  return extensions;
}();

template <class Predicate>
const Coding* Find(const Predicate& predicate) {
  const Coding* const found = std::ranges::find_if(kCodings, predicate);
  return found != std::end(kCodings) ? found : nullptr;
}

const Coding* FindByExtension(std::wstring_view path) {
  return Find([path](const Coding& coding) {
    return IsRaw(coding) && HasExtension(path, coding.extension);
  });
}

bool IsWaveFile(HeaderReader& reader) {
  unsigned char bytes[12];
  return reader.Read(0, bytes, sizeof bytes) && IsId(bytes, "RIFF") && IsId(bytes + 8, "WAVE");
}

bool HasTag(const Coding& coding, std::uint32_t tag) { return tag != kNoTag && coding.tag == tag; }

// Nearly every wave file begins with its format, whose tag then says whether the table has it. That
// spares opening the file once more: every .wav file comes by on its way to the last reader.
bool MayBeDecoded(HeaderReader& reader) {
  unsigned char bytes[22];
  if (!reader.Read(0, bytes, sizeof bytes) || !IsId(bytes + 12, "fmt ")) return true;
  const std::uint32_t tag = LittleEndian16(bytes + 20);
  return Find([tag](const Coding& coding) { return HasTag(coding, tag); }) != nullptr;
}

// Where the coded audio is.
struct Source {
  const Coding* coding = nullptr;
  std::uint32_t channels = 1;
  std::uint32_t frequency = kG711Frequency;  // Hz; frames go by their codec
  std::uint64_t offset = 0;                  // bytes
  std::uint64_t size = UnitLayout::kToTheEnd;
  std::optional<std::uint32_t> toldFrames;  // by a wave file
};

struct Fact {
  std::uint64_t offset;  // of the chunk
  std::uint32_t frames;
};

// The chunk may stand behind the data, where the probe does not come.
std::optional<Fact> FindFact(HeaderReader& reader) {
  std::uint64_t offset = 12;
  unsigned char bytes[12];
  for (int count = 0; count < kMostRIFFChunks && reader.Read(offset, bytes, 8); ++count) {
    const std::uint64_t size = LittleEndian32(bytes + 4);
    if (IsId(bytes, "fact") && size >= 4 && reader.Read(offset, bytes, sizeof bytes)) {
      return Fact{offset, LittleEndian32(bytes + 8)};
    }
    offset += 8 + size + size % 2;
  }
  return std::nullopt;
}

void TakeFact(const Fact& fact, Source& source) {
  source.toldFrames = fact.frames;
  // Data of no bytes, which the probe took for such of an unknown size.
  if (fact.frames == 0 && fact.offset == source.offset) source.size = 0;
}

bool IsDecoded(const RIFFHeaderProbe& probe, const Coding& coding) {
  if (!HasTag(coding, probe.formatTag)) return false;
  if (probe.dataOffset == 0 || probe.blockAlign != probe.channels * coding.blockAlign) return false;
  if (!coding.IsFramed()) return probe.bitsPerSample == 8;
  return probe.channels <= (coding.isMixed ? 1 : FrameDecoders::kMostChannels);
}

bool FindInWaveFile(const wchar_t* path, HeaderReader& reader, Source& source) {
  RIFFHeaderProbe probe;
  if (!MayBeDecoded(reader) || !probe.Open(path, false)) return false;
  source = {.coding = Find([&probe](const Coding& c) { return IsDecoded(probe, c); }),
            .channels = probe.channels,
            .frequency = static_cast<std::uint32_t>(probe.samplesPerSecond),
            .offset = probe.dataOffset,
            .size = probe.dataSize,
            .toldFrames = std::nullopt};
  if (source.coding == nullptr) return false;
  const auto fact = source.coding->IsFramed() ? FindFact(reader) : std::nullopt;
  if (fact) TakeFact(*fact, source);
  return true;
}

bool FindSource(const wchar_t* path, HeaderReader& reader, Source& source) {
  if (IsWaveFile(reader)) return FindInWaveFile(path, reader, source);
  source.coding = FindByExtension(path);
  return source.coding != nullptr;
}

class CInputAUDMediaFileImpl final : public UnitMediaFile<> {
 protected:
  QVERRORCODE_TAG ReadHeader(const wchar_t* path, HeaderReader& reader, UnitAudio& audio) override;
  QVERRORCODE_TAG Decode(const unsigned char* units, std::size_t count, short* samples) override;
  std::size_t BlockFrames(std::size_t count) const override {
    return coding_->isMixed ? decodedSamples_ : UnitMediaFile::BlockFrames(count);
  }
  void CloseFormat() override {
    UnitMediaFile::CloseFormat();
    decoders_.Release();
  }
  std::wstring_view FormatName() const override { return kFormatName; }
  std::wstring EncodingName() const override { return coding_->name; }

 private:
  QVERRORCODE_TAG PrepareFrames(const wchar_t* path, UnitAudio& audio);
  QVERRORCODE_TAG DecodeMixed(std::span<const unsigned char> block, short* samples);

  const Coding* coding_ = nullptr;
  FrameDecoders decoders_;  // of a coding in frames
  std::size_t channels_ = 0;
  std::size_t unitFrames_ = 0;
  MixedFrames mixed_;
  std::size_t decodedSamples_ = 0;  // of mixed frames, in the last block
};

// What a wave file tells is believed when it ends within the last of the coded frames: that one was
// filled up.
bool IsToldRightly(const Source& source, std::uint64_t inData, std::size_t codedFrame) {
  return source.toldFrames && *source.toldFrames <= inData &&
         inData - *source.toldFrames < codedFrame;
}

QVERRORCODE_TAG CInputAUDMediaFileImpl::ReadHeader(const wchar_t* path, HeaderReader& reader,
                                                   UnitAudio& audio) {
  Source source;
  if (!FindSource(path, reader, source)) return QVERR_BAD_FORMAT;
  coding_ = source.coding;
  channels_ = source.channels;
  audio.facts = {.channels = static_cast<int>(source.channels),
                 .samplingFrequency = source.frequency};
  // A byte of each channel, which has its place in time within a frame.
  audio.layout = {.offset = source.offset,
                  .size = source.size,
                  .unitBytes = source.channels,
                  .blockUnits = std::max<std::size_t>(kBlockBytes / source.channels, 1)};
  if (coding_->IsFramed()) {
    const QVERRORCODE_TAG result = PrepareFrames(path, audio);
    if (result != QVERR_OK) return result;
  }
  unitFrames_ = audio.unitFrames;
  const bool isToTheEnd = source.size == UnitLayout::kToTheEnd;
  const std::uint64_t bytes = isToTheEnd ? reader.Size() : source.size;
  std::uint64_t frames = coding_->isMixed ? CountMixedSamples(reader, source.offset, source.size)
                                          : bytes / audio.layout.unitBytes * audio.unitFrames;
  const std::size_t codedFrame = coding_->IsFramed() ? decoders_.FrameSamples() : 1;
  if (IsToldRightly(source, frames, codedFrame)) frames = audio.frames = *source.toldFrames;
  audio.facts.milliseconds =
      ToMilliseconds(static_cast<double>(frames) * 1000.0 / audio.facts.samplingFrequency);
  return QVERR_OK;
}

QVERRORCODE_TAG CInputAUDMediaFileImpl::PrepareFrames(const wchar_t* path, UnitAudio& audio) {
  if (!IPPCoder::IsLicensedCodec(coding_->codec)) return QVERR_NOT_LICENSED;
  if (!decoders_.Create(coding_->codec, coding_->bitRate, channels_)) {
    LibraryLog().Printf(L"%s: refused; there is no decoder of %s", path, coding_->name);
    return QVERR_BAD_FORMAT;
  }
  audio.facts.samplingFrequency = static_cast<std::uint32_t>(decoders_.SamplingFrequency());
  const std::size_t frameBytes = decoders_.FrameBytes();
  audio.layout.blockUnits -= audio.layout.blockUnits % frameBytes;
  audio.unitFrames = decoders_.FrameSamples() / frameBytes;
  if (!coding_->isMixed) return QVERR_OK;
  audio.layout.blockUnits = kMixedBlockBytes;
  audio.unitFrames = kMixedFrameSamples;
  mixed_.Start(audio.layout.size);
  return QVERR_OK;
}

QVERRORCODE_TAG CInputAUDMediaFileImpl::Decode(const unsigned char* units, std::size_t count,
                                               short* samples) {
  if (coding_->isMixed) return DecodeMixed({units, count}, samples);
  if (coding_->IsFramed()) {
    return decoders_.Decode({units, count * channels_}, samples, count * unitFrames_);
  }
  ExpandG711(coding_->law, units, count * channels_, samples);
  return QVERR_OK;
}

// Where a frame is refused, the ones after it keep in step.
QVERRORCODE_TAG CInputAUDMediaFileImpl::DecodeMixed(std::span<const unsigned char> block,
                                                    short* samples) {
  QVERRORCODE_TAG result = QVERR_OK;
  decodedSamples_ = 0;
  for (MixedFrame frame; mixed_.Next(block, frame); decodedSamples_ += frame.samples) {
    const QVERRORCODE_TAG decoded =
        decoders_.Decode(frame.bytes, samples + decodedSamples_, frame.samples);
    if (result == QVERR_OK) result = decoded;
  }
  return result;
}

using CInputAUDMediaFileFactory = BuiltInMediaFileFactoryOf<CInputAUDMediaFileImpl>;
const CInputAUDMediaFileFactory factory(kFormatName, kExtensions);

}  // namespace

const CMediaFileFactory& InputAUDMediaFileFactory() { return factory; }

}  // namespace Quorvex
