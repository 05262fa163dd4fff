// WaveFormat: how the audio of a wave file is coded.
#pragma once

#include <cstdint>
#include <vector>

namespace Quorvex {

/// The format record of a wave file, WAVEFORMATEX to the platform, with the bytes that follow it.
struct WaveFormat {
  std::uint16_t tag = 0;
  std::uint16_t channels = 0;
  std::uint32_t samplesPerSecond = 0;
  std::uint32_t averageBytesPerSecond = 0;
  std::uint16_t blockAlign = 0;  // bytes of the smallest piece that can be decoded
  std::uint16_t bitsPerSample = 0;
  std::vector<unsigned char> extra;  // what a coding adds; at most 65,535 bytes
};

/// The wave format tags that this library knows itself. Source: the public registry of wave format
/// tags, RFC 2361.
enum WaveTag : std::uint16_t {
  kWaveTagPCM = 0x0001,
  kWaveTagMicrosoftADPCM = 0x0002,
  kWaveTagFloat = 0x0003,
  kWaveTagALaw = 0x0006,
  kWaveTagMuLaw = 0x0007,
  kWaveTagIMAADPCM = 0x0011,
  kWaveTagTrueSpeech = 0x0022,
  kWaveTagGSM610 = 0x0031,
  kWaveTagG729A = 0x0083,
  kWaveTagExtensible = 0xFFFE,
};

/// Whether a format is that of interleaved 16-bit samples.
inline bool IsPCM16(const WaveFormat& format) noexcept {
  return format.tag == kWaveTagPCM && format.bitsPerSample == 16;
}

/// Interleaved 16-bit samples.
inline WaveFormat PCM16Format(std::uint16_t channels, std::uint32_t samplesPerSecond) {
  const auto blockAlign = static_cast<std::uint16_t>(channels * 2);
  return {.tag = kWaveTagPCM,
          .channels = channels,
          .samplesPerSecond = samplesPerSecond,
          .averageBytesPerSecond = samplesPerSecond * blockAlign,
          .blockAlign = blockAlign,
          .bitsPerSample = 16,
          .extra = {}};
}

/// The format that an extensible one stands for, when it names it by a tag; any other format as it
/// is. May throw std::bad_alloc.
WaveFormat PlainFormat(const WaveFormat& format);

}  // namespace Quorvex
