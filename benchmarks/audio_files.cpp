// Writes the shortest header that each format has, and noise.
#include "benchmarks/audio_files.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <fstream>
#include <random>
#include <system_error>

namespace benchmarks {
namespace {

std::string LittleEndian(std::uint32_t value, int bytes) {
  std::string text;
  for (int i = 0; i < bytes; ++i) text += static_cast<char>(value >> (8 * i) & 0xFF);
  return text;
}

std::string BigEndian(std::uint32_t value) {
  std::string text = LittleEndian(value, 4);
  std::reverse(text.begin(), text.end());
  return text;
}

std::string WavHeader(int tag, int channels, int bytesPerSample, unsigned frequency,
                      unsigned long long frames) {
  const auto blockAlign = static_cast<std::uint32_t>(channels * bytesPerSample);
  const auto dataSize = static_cast<std::uint32_t>(frames * blockAlign);
  return "RIFF" + LittleEndian(dataSize + 36, 4) + "WAVEfmt " + LittleEndian(16, 4) +
         LittleEndian(static_cast<std::uint32_t>(tag), 2) +
         LittleEndian(static_cast<std::uint32_t>(channels), 2) + LittleEndian(frequency, 4) +
         LittleEndian(frequency * blockAlign, 4) + LittleEndian(blockAlign, 2) +
         LittleEndian(static_cast<std::uint32_t>(bytesPerSample * 8), 2) + "data" +
         LittleEndian(dataSize, 4);
}

std::string AuHeader(int encoding, int channels, unsigned frequency, unsigned long long dataSize) {
  return ".snd" + BigEndian(24) + BigEndian(static_cast<std::uint32_t>(dataSize)) +
         BigEndian(static_cast<std::uint32_t>(encoding)) + BigEndian(frequency) +
         BigEndian(static_cast<std::uint32_t>(channels));
}

unsigned long long Size(int channels, int bytesPerSample, unsigned long long frames) {
  return frames * static_cast<unsigned>(channels * bytesPerSample);
}

constexpr int kFloatEncoding = 6;

}  // namespace

AudioFile::AudioFile(const char* extension, const std::string& header, unsigned long long dataBytes,
                     Noise noise)
    : path_((std::filesystem::temp_directory_path() /
             ("media-accessor-" + std::to_string(std::random_device{}()) + extension))
                .string()) {
  std::ofstream file(path_, std::ios::binary);
  file << header;
  std::minstd_rand random;
  std::uniform_real_distribution<float> level(-1.0F, 1.0F);
  for (unsigned long long left = dataBytes; left > 0;) {
    std::string block;
    while (block.size() < 1 << 16) {
      block += noise == Noise::kFloats ? BigEndian(std::bit_cast<std::uint32_t>(level(random)))
                                       : std::string(1, static_cast<char>(random() >> 8));
    }
    block.resize(std::min<unsigned long long>(left, block.size()));
    file << block;
    left -= block.size();
  }
}

AudioFile::~AudioFile() {
  std::error_code error;
  std::filesystem::remove(path_, error);
}

WavFile::WavFile(int tag, int channels, int bytesPerSample, unsigned frequency,
                 unsigned long long frames)
    : AudioFile(".wav", WavHeader(tag, channels, bytesPerSample, frequency, frames),
                Size(channels, bytesPerSample, frames)) {}

AuFile::AuFile(int encoding, int channels, int bytesPerSample, unsigned frequency,
               unsigned long long frames)
    : AudioFile(".au",
                AuHeader(encoding, channels, frequency, Size(channels, bytesPerSample, frames)),
                Size(channels, bytesPerSample, frames),
                encoding == kFloatEncoding ? Noise::kFloats : Noise::kBytes) {}

}  // namespace benchmarks
