// Writes the canonical 44-byte header and noise.
#include "benchmarks/wav_file.h"

#include <cstdint>
#include <fstream>
#include <random>
#include <string>

namespace benchmarks {
namespace {

void Put(std::ofstream& file, std::uint32_t value, int bytes) {
  for (int i = 0; i < bytes; ++i) file.put(static_cast<char>(value >> (8 * i) & 0xFF));
}

std::string UniquePath() {
  const std::string name = "media-accessor-" + std::to_string(std::random_device{}()) + ".wav";
  return (std::filesystem::temp_directory_path() / name).string();
}

}  // namespace

WavFile::WavFile(int tag, int channels, int bytesPerSample, unsigned frequency,
                 unsigned long long frames)
    : path_(UniquePath()) {
  const auto blockAlign = static_cast<std::uint32_t>(channels * bytesPerSample);
  const auto dataSize = static_cast<std::uint32_t>(frames * blockAlign);
  std::ofstream file(path_, std::ios::binary);
  file << "RIFF";
  Put(file, dataSize + 36, 4);
  file << "WAVEfmt ";
  Put(file, 16, 4);
  Put(file, static_cast<std::uint32_t>(tag), 2);
  Put(file, static_cast<std::uint32_t>(channels), 2);
  Put(file, frequency, 4);
  Put(file, frequency * blockAlign, 4);
  Put(file, blockAlign, 2);
  Put(file, static_cast<std::uint32_t>(bytesPerSample * 8), 2);
  file << "data";
  Put(file, dataSize, 4);
  std::minstd_rand noise;
  std::string block(1 << 16, '\0');
  for (std::uint32_t left = dataSize; left > 0;) {
    for (char& byte : block) byte = static_cast<char>(noise() >> 8);
    const auto count = std::min<std::uint32_t>(left, static_cast<std::uint32_t>(block.size()));
    file.write(block.data(), count);
    left -= count;
  }
}

WavFile::~WavFile() {
  std::error_code error;
  std::filesystem::remove(path_, error);
}

}  // namespace benchmarks
