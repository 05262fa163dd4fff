// The engine's writing side:
//
//     "RIFF" size "WAVE"
//     "fmt " size record18 extra
//     "data" size audio [pad]
//     "fact" size frames32          only when it is not PCM; behind the data, where it is known
//
// The sizes are written once, when the chunks end. A file that fails is deleted.
#include <algorithm>
#include <cstring>
#include <limits>

#include "formats/wav/wav_media_file.h"
#include "support/ft_file.h"
#include "support/no_throw.h"

namespace Quorvex {
namespace {

using platform::FourCC;
using platform::RiffChunk;

constexpr std::uint32_t kLargest = std::numeric_limits<std::uint32_t>::max();
constexpr std::uint16_t kMostChannels = 0x7FFF;  // whose block align fits 16 bits
constexpr std::size_t kFormatRecord = 18;        // bytes

// Of a G.729A frame: 80 samples in 10 bytes.
constexpr std::uint32_t kG729ABytesPerSecond = 1000;
constexpr std::uint16_t kG729AFrame = 10;
constexpr std::uint16_t kMostG729AChannels = 2;  // that there are encoders for
// A TrueSpeech frame has 32 bytes elsewhere; readers of this library's files know these numbers.
constexpr std::uint32_t kTrueSpeechBytesPerSecond = 662;
constexpr std::uint16_t kTrueSpeechBlock = 20;
constexpr std::uint16_t kSpeechBits = 1;

bool IsCodedHere(std::uint16_t tag) {
  return tag == kWaveTagALaw || tag == kWaveTagMuLaw || tag == kWaveTagGSM610;
}

bool IsWrittenAsItComes(std::uint16_t tag) {
  return tag == kWaveTagPCM || tag == kWaveTagG729A || tag == kWaveTagTrueSpeech;
}

void Put16(std::uint32_t value, unsigned char* bytes) {
  bytes[0] = static_cast<unsigned char>(value);
  bytes[1] = static_cast<unsigned char>(value >> 8);
}
void Put32(std::uint32_t value, unsigned char* bytes) {
  Put16(value, bytes);
  Put16(value >> 16, bytes + 2);
}

}  // namespace

QVERRORCODE_TAG CWAVMediaFileImpl::CheckOutput() const noexcept {
  if (!IsCodedHere(output_.tag) && !IsWrittenAsItComes(output_.tag)) return QVERR_BAD_FORMAT;
  if (output_.tag == kWaveTagTrueSpeech && output_.channels != 1) return QVERR_MONO_ONLY;
  if (output_.channels == 0) return QVERR_BAD_CHANNEL_COUNT;
  const bool isG729A = output_.tag == kWaveTagG729A;
  if (output_.channels > (isG729A ? kMostG729AChannels : kMostChannels)) {
    return QVERR_UNSUPPORTED_CHANNELS;
  }
  const std::uint32_t frameBytes = output_.channels * 2U;
  return output_.samplesPerSecond > kLargest / frameBytes ? QVERR_INVALID_ARGUMENT : QVERR_OK;
}

// The record of what will be written, and the stream that codes it.
QVERRORCODE_TAG CWAVMediaFileImpl::CompleteFormat() {
  const auto [tag, channels, samplesPerSecond] = output_;
  const WaveFormat samples = PCM16Format(channels, samplesPerSecond);
  format_ = samples;
  if (tag == kWaveTagPCM) return QVERR_OK;
  format_ = {.tag = tag, .channels = channels, .samplesPerSecond = samplesPerSecond, .extra = {}};
  if (tag == kWaveTagG729A) {
    format_.averageBytesPerSecond = channels * kG729ABytesPerSecond;
    format_.blockAlign = static_cast<std::uint16_t>(channels * kG729AFrame);
    format_.bitsPerSample = kSpeechBits;
    return QVERR_OK;
  }
  if (tag == kWaveTagTrueSpeech) {
    format_.averageBytesPerSecond = kTrueSpeechBytesPerSecond;
    format_.blockAlign = kTrueSpeechBlock;
    format_.bitsPerSample = kSpeechBits;
    return QVERR_OK;
  }
  constexpr unsigned kGiven = kSuggestTag | kSuggestChannels | kSuggestSamplesPerSecond;
  if (SuggestFormat(samples, format_, kGiven) != Suggestion::kMade) return QVERR_BAD_FORMAT;
  encoder_ = CompressionStream::Open(samples, format_, source_);
  return encoder_ != nullptr ? QVERR_OK : QVERR_BAD_FORMAT;
}

QVERRORCODE_TAG CWAVMediaFileImpl::OpenForWriting(const wchar_t* name) {
  QVERRORCODE_TAG result = CheckOutput();
  if (result == QVERR_OK) result = CompleteFormat();
  if (result != QVERR_OK) return result;
  name_ = name;
  isCreated_ = stream_.Create(name);
  return isCreated_ && WriteHeader() ? QVERR_OK : QVERR_FILE_WRITE_FAILED;
}

bool CWAVMediaFileImpl::WriteHeader() noexcept {
  unsigned char record[kFormatRecord];
  Put16(format_.tag, record);
  Put16(format_.channels, record + 2);
  Put32(format_.samplesPerSecond, record + 4);
  Put32(format_.averageBytesPerSecond, record + 8);
  Put16(format_.blockAlign, record + 12);
  Put16(format_.bitsPerSample, record + 14);
  Put16(static_cast<std::uint32_t>(format_.extra.size()), record + 16);
  riff_ = {.id = platform::kRiffId, .type = FourCC("WAVE")};
  data_ = {.id = FourCC("data")};
  RiffChunk format{.id = FourCC("fmt ")};
  return stream_.CreateChunk(riff_) && stream_.CreateChunk(format) &&
         stream_.Write(record, sizeof record) &&
         stream_.Write(format_.extra.data(), format_.extra.size()) && stream_.Ascend(format) &&
         stream_.CreateChunk(data_);
}

QVERRORCODE_TAG CWAVMediaFileImpl::WriteCoded(const void* bytes, std::size_t count,
                                              std::size_t frames) noexcept {
  if (mode_ != kModeWrite) return QVERR_INVALID_ARGUMENT;
  if (!stream_.Write(bytes, count)) return QVERR_FILE_WRITE_FAILED;
  CountFrames(frames);
  return QVERR_OK;
}

void CWAVMediaFileImpl::CountFrames(std::size_t frames) noexcept {
  frameCount_ += static_cast<std::uint32_t>(std::min<std::size_t>(frames, kLargest - frameCount_));
}

QVERRORCODE_TAG CWAVMediaFileImpl::Write(const short* samples, std::size_t frames) noexcept {
  if (mode_ != kModeWrite) return QVERR_INVALID_ARGUMENT;
  const std::size_t frameBytes = std::size_t{format_.channels} * sizeof(short);
  if (frames > kLargest / frameBytes) return QVERR_FILE_WRITE_FAILED;  // more than a file holds
  std::size_t count = frames * frameBytes;
  if (format_.tag == kWaveTagPCM) return WriteCoded(samples, count, frames);
  if (encoder_ == nullptr) return QVERR_INVALID_ARGUMENT;
  const auto* bytes = reinterpret_cast<const unsigned char*>(samples);
  while (count > 0) {
    const std::size_t taken = std::min(count, source_.size() - pending_);
    std::memcpy(source_.data() + pending_, bytes, taken);
    pending_ += taken;
    bytes += taken;
    count -= taken;
    if (pending_ < source_.size()) break;
    std::size_t produced = 0;
    const QVERRORCODE_TAG result = Encode(ConvertExtent::kWholeBlocks, produced);
    if (result != QVERR_OK) return result;
  }
  CountFrames(frames);
  return QVERR_OK;
}

// Codes what is in the buffer and keeps what the coding leaves over.
QVERRORCODE_TAG CWAVMediaFileImpl::Encode(ConvertExtent extent, std::size_t& produced) noexcept {
  std::size_t used = 0;
  if (!encoder_->Convert(pending_, extent, used, produced)) return QVERR_BAD_FORMAT;
  if (used == 0 && pending_ > 0) return QVERR_BAD_FORMAT;  // would be so for ever
  if (!stream_.Write(encoder_->Output().data(), produced)) return QVERR_FILE_WRITE_FAILED;
  pending_ -= used;
  std::memmove(source_.data(), source_.data() + used, pending_);
  return QVERR_OK;
}

QVERRORCODE_TAG CWAVMediaFileImpl::FinishWriting() noexcept {
  // The rest of the samples, then what the coding holds back.
  for (bool isDone = encoder_ == nullptr; !isDone;) {
    const bool isRest = pending_ > 0;
    std::size_t produced = 0;
    const QVERRORCODE_TAG result =
        Encode(isRest ? ConvertExtent::kAnything : ConvertExtent::kEnd, produced);
    if (result != QVERR_OK) return result;
    isDone = !isRest && produced == 0;
  }
  bool isWritten = stream_.Ascend(data_);
  if (format_.tag != kWaveTagPCM) {
    unsigned char count[4];
    Put32(frameCount_, count);
    RiffChunk fact{.id = FourCC("fact")};
    isWritten = isWritten && stream_.CreateChunk(fact) && stream_.Write(count, sizeof count) &&
                stream_.Ascend(fact);
  }
  isWritten = isWritten && stream_.Ascend(riff_);
  return stream_.Close() && isWritten ? QVERR_OK : QVERR_FILE_WRITE_FAILED;
}

void CWAVMediaFileImpl::Abandon() noexcept {
  const std::wstring name = std::move(name_);
  const bool isCreated = isCreated_;
  Reset();
  if (!isCreated) return;
  NoThrow([&] {
    CFTFile::Delete(name);
    return QVERR_OK;
  });
}

}  // namespace Quorvex
