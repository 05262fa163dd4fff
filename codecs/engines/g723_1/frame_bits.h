// The bits of a frame.
#pragma once

#include <array>
#include <cstddef>

#include "codecs/engines/g723_1/frame.h"

namespace Quorvex::g723_1 {

/// What the two low bits of a frame's first byte say.
enum class FrameType { kAtHighRate, kAtLowRate, kSilence, kUntransmitted };

constexpr FrameType TypeOf(unsigned char firstByte) noexcept {
  return static_cast<FrameType>(firstByte & 3);
}
constexpr bool IsSpeech(FrameType type) noexcept {
  return type == FrameType::kAtHighRate || type == FrameType::kAtLowRate;
}
/// Length of a frame of this type.
constexpr std::size_t BytesOf(FrameType type) noexcept {
  constexpr std::size_t kBytes[] = {24, 20, 4, 1};
  return kBytes[static_cast<std::size_t>(type)];
}
inline constexpr std::size_t kMostFrameBytes = 24;

/// What is sent of a subframe.
struct SubframeIndices {
  unsigned pitchRow = 0;  ///< of kShortLagGains or kPitchGains
  unsigned codeGain = 0;  ///< of kCodeGains
  bool hasPulseTrain = false;
  unsigned grid = 0;       ///< 0: pulses at even samples, 1: at odd ones
  unsigned positions = 0;  ///< 20 or 18 bits at 6.3 kbit/s, 12 bits at 5.3
  unsigned signs = 0;      ///< a bit for each pulse
};

struct FrameIndices {
  FrameType type = FrameType::kUntransmitted;
  unsigned spectrum = 0;                   ///< 24 bits, also of silence
  unsigned noiseLevel = 0;                 ///< 6 bits, of silence
  std::array<int, kHalves> halfLags = {};  ///< of each half: kLeastLag + 0 to 123
  std::array<unsigned, kSubframes> lagDeltas = {1, 1, 1, 1};  ///< 0 to 3; 1 where none is sent
  std::array<SubframeIndices, kSubframes> subframes;

  /// The subframe's own lag: kLeastLag - 1 to kMostLag + 1.
  int Lag(std::size_t subframe) const noexcept {
    return halfLags[subframe / 2] - 1 + static_cast<int>(lagDeltas[subframe]);
  }
};

/// Whether the gains of a half with this lag are those of kShortLagGains.
constexpr bool HasShortLagGains(FrameType type, int halfLag) noexcept {
  return type == FrameType::kAtHighRate && halfLag < kShortLagEnd;
}

/// @param data  a frame of the length that its type has.
/// @return false for a frame that no encoder makes: a lag or a row of gains that there is not.
bool Unpack(const unsigned char* data, FrameIndices& indices) noexcept;
/// @param data  receives the frame. @return its length.
std::size_t Pack(const FrameIndices& indices, unsigned char* data) noexcept;

}  // namespace Quorvex::g723_1
