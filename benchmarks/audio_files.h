// Files of noise for the benchmarks to read.
#pragma once

#include <filesystem>
#include <string>

namespace benchmarks {

/// A file in the directory for temporary files, removed at the end.
class AudioFile {
 public:
  AudioFile(const AudioFile&) = delete;
  AudioFile& operator=(const AudioFile&) = delete;
  ~AudioFile();

  const std::string& Path() const { return path_; }

 protected:
  /// What the data is: any bytes, or big-endian numbers between -1 and 1.
  enum class Noise { kBytes, kFloats };

  /// @param extension  with its dot.
  AudioFile(const char* extension, const std::string& header, unsigned long long dataBytes,
            Noise noise = Noise::kBytes);

 private:
  std::string path_;
};

struct WavFile : AudioFile {
  /// @param tag             wave format tag: 1, 6 or 7.
  /// @param bytesPerSample  2 for tag 1, 1 for the others.
  WavFile(int tag, int channels, int bytesPerSample, unsigned frequency, unsigned long long frames);
};

struct AuFile : AudioFile {
  /// @param encoding  as in the header: 1 (mu-law), 3 (16-bit) or 6 (32-bit floating point).
  AuFile(int encoding, int channels, int bytesPerSample, unsigned frequency,
         unsigned long long frames);
};

struct VoxFile : AudioFile {
  explicit VoxFile(unsigned long long bytes) : AudioFile(".vox", "", bytes) {}
};

}  // namespace benchmarks
