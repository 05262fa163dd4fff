#include "codecs/engines/g723_1/frame_bits.h"

#include <algorithm>

#include "codecs/engines/g723_1/fixed_codebook_tables.h"
#include "codecs/engines/g723_1/pitch_gain_tables.h"

namespace Quorvex::g723_1 {
namespace {

constexpr int kTypeBits = 2;
constexpr int kSpectrumBits = 24;
constexpr int kNoiseLevelBits = 6;
constexpr int kLagBits = 7;
constexpr int kDeltaBits = 2;
constexpr int kGainBits = 12;
constexpr unsigned kPulseTrain = 1U << 11;  // of the gains

constexpr int kMostSentLag = kLeastLag + 123;
constexpr auto kCodeGainCount = static_cast<unsigned>(kCodeGains.size());

// At 6.3 kbit/s: the upper parts of the four placements are sent as one number, the lower ones by
// themselves.
constexpr int kUpperBits = 13;
constexpr std::array<int, kSubframes> kLowerBits = {16, 14, 16, 14};
constexpr unsigned kUpperParts = 9;  // of an odd subframe's placement
constexpr unsigned kUpperPartsOfTwo = 90;
// At 5.3 kbit/s.
constexpr int kPositionBits = 12;
constexpr int kSignBits = 4;

// Fields lie side by side from the lowest bit of the first byte on.
class BitReader {
 public:
  explicit BitReader(const unsigned char* data) noexcept : data_(data) {}

  unsigned Take(int bits) noexcept {
    unsigned value = 0;
    for (int taken = 0; taken < bits;) {
      const int inByte = position_ % 8;
      const int count = std::min(8 - inByte, bits - taken);
      const unsigned part = (unsigned{data_[position_ / 8]} >> inByte) & ((1U << count) - 1);
      value |= part << taken;
      taken += count;
      position_ += count;
    }
    return value;
  }

 private:
  const unsigned char* data_;
  int position_ = 0;
};

class BitWriter {
 public:
  explicit BitWriter(unsigned char* data) noexcept : data_(data) {}

  void Put(unsigned value, int bits) noexcept {
    while (bits > 0) {
      const int inByte = position_ % 8;
      const int count = std::min(8 - inByte, bits);
      unsigned char& byte = data_[position_ / 8];
      const unsigned kept = inByte == 0 ? 0U : byte;
      byte = static_cast<unsigned char>(kept | ((value & ((1U << count) - 1)) << inByte));
      value >>= count;
      bits -= count;
      position_ += count;
    }
  }

 private:
  unsigned char* data_;
  int position_ = 0;
};

bool ReadLags(BitReader& bits, FrameIndices& indices) noexcept {
  bool isValid = true;
  for (std::size_t half = 0; half < kHalves; ++half) {
    indices.halfLags[half] = kLeastLag + static_cast<int>(bits.Take(kLagBits));
    indices.lagDeltas[2 * half + 1] = bits.Take(kDeltaBits);
    isValid = isValid && indices.halfLags[half] <= kMostSentLag;
  }
  return isValid;
}

bool ReadGains(BitReader& bits, FrameIndices& indices) noexcept {
  bool isValid = true;
  for (std::size_t i = 0; i < kSubframes; ++i) {
    unsigned gains = bits.Take(kGainBits);
    const bool hasShortLag = HasShortLagGains(indices.type, indices.halfLags[i / 2]);
    SubframeIndices& subframe = indices.subframes[i];
    subframe.hasPulseTrain = hasShortLag && (gains & kPulseTrain) != 0;
    if (hasShortLag) gains &= kPulseTrain - 1;
    subframe.pitchRow = gains / kCodeGainCount;
    subframe.codeGain = gains % kCodeGainCount;
    const std::size_t rows = hasShortLag ? kShortLagGains.size() : kPitchGains.size();
    isValid = isValid && subframe.pitchRow < rows;
  }
  return isValid;
}

void ReadMultipulse(BitReader& bits, FrameIndices& indices) noexcept {
  bits.Take(1);  // reserved
  const unsigned upper = bits.Take(kUpperBits);
  const std::array<unsigned, kSubframes> parts = {
      upper / kUpperPartsOfTwo / kUpperParts, upper / kUpperPartsOfTwo % kUpperParts,
      upper % kUpperPartsOfTwo / kUpperParts, upper % kUpperPartsOfTwo % kUpperParts};
  for (std::size_t i = 0; i < kSubframes; ++i) {
    const int lowerBits = kLowerBits[i];
    indices.subframes[i].positions = (parts[i] << lowerBits) | bits.Take(lowerBits);
  }
  for (std::size_t i = 0; i < kSubframes; ++i) {
    indices.subframes[i].signs = bits.Take(static_cast<int>(kPulses[i]));
  }
}

void ReadAlgebraic(BitReader& bits, FrameIndices& indices) noexcept {
  for (SubframeIndices& subframe : indices.subframes) subframe.positions = bits.Take(kPositionBits);
  for (SubframeIndices& subframe : indices.subframes) subframe.signs = bits.Take(kSignBits);
}

void WriteGains(const FrameIndices& indices, BitWriter& bits) noexcept {
  for (const SubframeIndices& subframe : indices.subframes) {
    const unsigned gains = subframe.pitchRow * kCodeGainCount + subframe.codeGain;
    bits.Put(gains | (subframe.hasPulseTrain ? kPulseTrain : 0U), kGainBits);
  }
}

void WriteMultipulse(const FrameIndices& indices, BitWriter& bits) noexcept {
  const auto upper = [&indices](std::size_t i) {
    return indices.subframes[i].positions >> kLowerBits[i];
  };
  bits.Put(0, 1);
  bits.Put(
      (upper(0) * kUpperParts + upper(1)) * kUpperPartsOfTwo + upper(2) * kUpperParts + upper(3),
      kUpperBits);
  for (std::size_t i = 0; i < kSubframes; ++i) {
    bits.Put(indices.subframes[i].positions, kLowerBits[i]);
  }
  for (std::size_t i = 0; i < kSubframes; ++i) {
    bits.Put(indices.subframes[i].signs, static_cast<int>(kPulses[i]));
  }
}

void WriteAlgebraic(const FrameIndices& indices, BitWriter& bits) noexcept {
  for (const SubframeIndices& subframe : indices.subframes) {
    bits.Put(subframe.positions, kPositionBits);
  }
  for (const SubframeIndices& subframe : indices.subframes) bits.Put(subframe.signs, kSignBits);
}

}  // namespace

bool Unpack(const unsigned char* data, FrameIndices& indices) noexcept {
  indices.type = TypeOf(data[0]);
  if (indices.type == FrameType::kUntransmitted) return true;
  BitReader bits(data);
  bits.Take(kTypeBits);
  indices.spectrum = bits.Take(kSpectrumBits);
  if (indices.type == FrameType::kSilence) {
    indices.noiseLevel = bits.Take(kNoiseLevelBits);
    return true;
  }
  if (!ReadLags(bits, indices) || !ReadGains(bits, indices)) return false;
  for (SubframeIndices& subframe : indices.subframes) subframe.grid = bits.Take(1);
  if (indices.type == FrameType::kAtHighRate) {
    ReadMultipulse(bits, indices);
  } else {
    ReadAlgebraic(bits, indices);
  }
  return true;
}

std::size_t Pack(const FrameIndices& indices, unsigned char* data) noexcept {
  BitWriter bits(data);
  const std::size_t bytes = BytesOf(indices.type);
  bits.Put(static_cast<unsigned>(indices.type), kTypeBits);
  if (indices.type == FrameType::kUntransmitted) return bytes;
  bits.Put(indices.spectrum, kSpectrumBits);
  if (indices.type == FrameType::kSilence) {
    bits.Put(indices.noiseLevel, kNoiseLevelBits);
    return bytes;
  }
  for (std::size_t half = 0; half < kHalves; ++half) {
    bits.Put(static_cast<unsigned>(indices.halfLags[half] - kLeastLag), kLagBits);
    bits.Put(indices.lagDeltas[2 * half + 1], kDeltaBits);
  }
  WriteGains(indices, bits);
  for (const SubframeIndices& subframe : indices.subframes) bits.Put(subframe.grid, 1);
  if (indices.type == FrameType::kAtHighRate) {
    WriteMultipulse(indices, bits);
  } else {
    WriteAlgebraic(indices, bits);
  }
  return bytes;
}

}  // namespace Quorvex::g723_1
