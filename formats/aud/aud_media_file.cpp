// What a file holds is told by a wave file's header, or else by the extension:
//
//     wave header?  yes: its tag, channels, rate and data
//                   no:  the extension; everything is data, mono
//     then          a line of the table below, which names the decoder
//
// A coding is decoded by the byte (G.711) or by the speech decoder, which goes by frames. Blocks
// are whole frames, so that only the last one of a file can be a part of one. The decoder fills it
// up with zeros; of what comes out, this reader keeps as much as the bytes stand for.
#include "formats/aud/aud_media_file.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>

#include <MediaAccessor/ipp_decoder.h>
#include <MediaAccessor/media_sink.h>
#include <MediaAccessor/ownership.h>

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

constexpr std::wstring_view kFormatName = L"AUD/NMF/WAV/G729AB/TrueSpeech/G722/ALaw/Mulaw format";

constexpr std::uint32_t kNoTag = 0;

// What can be decoded, and where it is found. A later codec adds its line.
struct Coding {
  std::wstring_view extension;  // of raw files, in upper case; or empty
  std::uint32_t tag;            // of wave files, or kNoTag
  const wchar_t* name;
  WaveLaw law;              // of G.711; kLinear: the speech decoder's
  IPPCoder::CODEC codec{};  // whose frames hold a whole number of samples a byte
  long bitRate = 0;

  bool IsFramed() const { return law == WaveLaw::kLinear; }
};

constexpr Coding kCodings[] = {
    {L"G722", kNoTag, L"CCITT G.722 64 kbit/s", WaveLaw::kLinear, IPPCoder::G722, 64'000},
    {L"ALAW", 6, kALawName, WaveLaw::kALaw},
    {L"MULAW", 7, kMuLawName, WaveLaw::kMuLaw},
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

const Coding* FindByTag(std::uint32_t tag) {
  return Find([tag](const Coding& coding) { return tag != kNoTag && coding.tag == tag; });
}

bool IsWaveFile(HeaderReader& reader) {
  unsigned char bytes[12];
  return reader.Read(0, bytes, sizeof bytes) && IsId(bytes, "RIFF") && IsId(bytes + 8, "WAVE");
}

// Nearly every wave file begins with its format, whose tag then says whether the table has it. That
// spares opening the file once more: every .wav file comes by on its way to the last reader.
bool MayBeDecoded(HeaderReader& reader) {
  unsigned char bytes[22];
  return !reader.Read(0, bytes, sizeof bytes) || !IsId(bytes + 12, "fmt ") ||
         FindByTag(LittleEndian16(bytes + 20)) != nullptr;
}

// Where the coded audio is.
struct Source {
  const Coding* coding = nullptr;
  std::uint32_t channels = 1;
  std::uint32_t frequency = kG711Frequency;  // Hz; frames go by their codec
  std::uint64_t offset = 0;                  // bytes
  std::uint64_t size = UnitLayout::kToTheEnd;
};

bool FindInWaveFile(const wchar_t* path, HeaderReader& reader, Source& source) {
  RIFFHeaderProbe probe;
  if (!MayBeDecoded(reader) || !probe.Open(path, false)) return false;
  source = {.coding = FindByTag(probe.formatTag),
            .channels = probe.channels,
            .frequency = static_cast<std::uint32_t>(probe.samplesPerSecond),
            .offset = probe.dataOffset,
            .size = probe.dataSize};
  const bool hasData = probe.dataOffset != 0;
  return source.coding != nullptr && hasData && probe.bitsPerSample == 8 &&
         probe.blockAlign == probe.channels;
}

bool FindSource(const wchar_t* path, HeaderReader& reader, Source& source) {
  if (IsWaveFile(reader)) return FindInWaveFile(path, reader, source);
  source.coding = FindByExtension(path);
  return source.coding != nullptr;
}

// Takes what a speech decoder pushes, as far as there is room.
class BlockSink final : public CMediaSink {
 public:
  void SetRoom(std::span<short> room) { room_ = room; }
  QVERRORCODE_TAG SetChannelCount(int) override { return QVERR_OK; }
  QVERRORCODE_TAG Write(const void* data, unsigned long count) override {
    const std::size_t taken = std::min<std::size_t>(count, room_.size());
    std::copy_n(static_cast<const short*>(data), taken, room_.begin());
    room_ = room_.subspan(taken);
    return QVERR_OK;
  }

 private:
  std::span<short> room_;
};

class CInputAUDMediaFileImpl final : public UnitMediaFile<> {
 protected:
  QVERRORCODE_TAG ReadHeader(const wchar_t* path, HeaderReader& reader, UnitAudio& audio) override;
  QVERRORCODE_TAG Decode(const unsigned char* units, std::size_t count, short* samples) override;
  void CloseFormat() override {
    UnitMediaFile::CloseFormat();
    decoder_.reset();
  }
  std::wstring_view FormatName() const override { return kFormatName; }
  std::wstring EncodingName() const override { return coding_->name; }

 private:
  QVERRORCODE_TAG PrepareFrames(const wchar_t* path, UnitAudio& audio);

  const Coding* coding_ = nullptr;
  BlockSink sink_;
  IPPDecoderPtr decoder_;  // of a coding in frames
  std::size_t samplesPerUnit_ = 0;
};

QVERRORCODE_TAG CInputAUDMediaFileImpl::ReadHeader(const wchar_t* path, HeaderReader& reader,
                                                   UnitAudio& audio) {
  Source source;
  if (!FindSource(path, reader, source)) return QVERR_BAD_FORMAT;
  coding_ = source.coding;
  audio.facts = {.channels = static_cast<int>(source.channels),
                 .samplingFrequency = source.frequency};
  audio.layout = {.offset = source.offset,
                  .size = source.size,
                  .unitBytes = source.channels,
                  .blockUnits = std::max<std::size_t>(kBlockBytes / source.channels, 1)};
  if (coding_->IsFramed()) {
    const QVERRORCODE_TAG result = PrepareFrames(path, audio);
    if (result != QVERR_OK) return result;
  }
  const std::uint64_t bytes = source.size == UnitLayout::kToTheEnd ? reader.Size() : source.size;
  const std::uint64_t frames = bytes / audio.layout.unitBytes * audio.unitFrames;
  audio.facts.milliseconds =
      ToMilliseconds(static_cast<double>(frames) * 1000.0 / audio.facts.samplingFrequency);
  samplesPerUnit_ = audio.unitFrames * source.channels;
  return QVERR_OK;
}

// A unit is a byte, which has its place in time within a frame.
QVERRORCODE_TAG CInputAUDMediaFileImpl::PrepareFrames(const wchar_t* path, UnitAudio& audio) {
  if (!IPPCoder::IsLicensedCodec(coding_->codec)) return QVERR_NOT_LICENSED;
  decoder_.reset(IPPDecoder::CreateInstance(coding_->codec, coding_->bitRate));
  if (decoder_ == nullptr) {
    LibraryLog().Printf(L"%s: refused; there is no decoder of %s", path, coding_->name);
    return QVERR_BAD_FORMAT;
  }
  decoder_->SetSink(&sink_);
  const auto frameBytes = static_cast<std::uint32_t>(decoder_->GetCompressedFrameBytes());
  audio.layout.blockUnits = kBlockBytes / frameBytes * frameBytes;
  audio.unitFrames = static_cast<std::size_t>(decoder_->SamplesForBytes(frameBytes)) / frameBytes;
  audio.facts.samplingFrequency = static_cast<std::uint32_t>(decoder_->GetSampleRate());
  return QVERR_OK;
}

QVERRORCODE_TAG CInputAUDMediaFileImpl::Decode(const unsigned char* units, std::size_t count,
                                               short* samples) {
  const std::size_t total = count * samplesPerUnit_;
  if (!coding_->IsFramed()) {
    ExpandG711(coding_->law, units, total, samples);
    return QVERR_OK;
  }
  sink_.SetRoom({samples, total});
  return decoder_->Decode(units, static_cast<std::uint32_t>(count));
}

using CInputAUDMediaFileFactory = BuiltInMediaFileFactoryOf<CInputAUDMediaFileImpl>;
const CInputAUDMediaFileFactory factory(kFormatName, kExtensions);

}  // namespace

const CMediaFileFactory& InputAUDMediaFileFactory() { return factory; }

}  // namespace Quorvex
