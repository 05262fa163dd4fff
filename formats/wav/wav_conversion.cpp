// One stage:   coding -> 16-bit PCM, at most two channels
// Two stages:  coding -> any PCM -> PCM of that many channels
#include "formats/wav/wav_conversion.h"

#include <algorithm>

namespace Quorvex {
namespace {

constexpr std::uint16_t kMostChannels = 2;
constexpr std::uint16_t kBits = 16;

}  // namespace

QVERRORCODE_TAG WAVConversion::Open(const WaveFormat& fileFormat, std::span<unsigned char> source) {
  Close();
  const WaveFormat format = PlainFormat(fileFormat);
  const std::uint16_t channels = std::min(format.channels, kMostChannels);
  target_ = {.tag = kWaveTagPCM, .channels = channels, .bitsPerSample = kBits, .extra = {}};
  const Suggestion suggestion =
      SuggestFormat(format, target_, kSuggestTag | kSuggestChannels | kSuggestBitsPerSample);
  if (suggestion == Suggestion::kMade) {
    first_ = CompressionStream::Open(format, target_, source);
  } else if (suggestion == Suggestion::kNotPossible) {
    WaveFormat between{.tag = kWaveTagPCM, .extra = {}};
    if (SuggestFormat(format, between, kSuggestTag) != Suggestion::kMade ||
        SuggestFormat(between, target_, kSuggestTag | kSuggestChannels) != Suggestion::kMade) {
      return QVERR_BAD_FORMAT;
    }
    first_ = CompressionStream::Open(format, between, source);
    if (first_ == nullptr) return QVERR_BAD_FORMAT;
    // It finds its bytes where the first stage leaves them.
    second_ = CompressionStream::Open(between, target_, first_->Output());
    if (second_ == nullptr) first_ = nullptr;
  }
  // The second suggestion was free to choose a width.
  const bool isWanted = target_.channels == channels && target_.bitsPerSample == kBits &&
                        target_.samplesPerSecond != 0;
  if (!isWanted) Close();
  return IsOpen() ? QVERR_OK : QVERR_BAD_FORMAT;
}

void WAVConversion::Close() noexcept {
  second_ = nullptr;  // reads from the first
  first_ = nullptr;
}

QVERRORCODE_TAG WAVConversion::Convert(std::size_t bytes, ConvertExtent extent, std::size_t& used,
                                       std::size_t& produced) noexcept {
  if (!first_->Convert(bytes, extent, used, produced)) return QVERR_BAD_FORMAT;
  if (second_ == nullptr || produced == 0) return QVERR_OK;
  const std::size_t between = produced;
  std::size_t usedBetween = 0;
  const bool isConverted =
      second_->Convert(between, ConvertExtent::kWholeBlocks, usedBetween, produced);
  // PCM leaves nothing over.
  return isConverted && usedBetween == between ? QVERR_OK : QVERR_BAD_FORMAT;
}

const short* WAVConversion::Samples() const noexcept {
  CompressionStream& last = second_ != nullptr ? *second_ : *first_;
  return reinterpret_cast<const short*>(last.Output().data());
}

}  // namespace Quorvex
