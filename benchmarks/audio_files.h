// WAV files for the benchmarks to read.
#pragma once

#include <filesystem>

namespace benchmarks {

/// A WAV file of noise in the directory for temporary files, removed at the end.
class WavFile {
 public:
  /// @param tag             wave format tag: 1, 6 or 7.
  /// @param bytesPerSample  2 for tag 1, 1 for the others.
  WavFile(int tag, int channels, int bytesPerSample, unsigned frequency, unsigned long long frames);
  ~WavFile();
  WavFile(const WavFile&) = delete;
  WavFile& operator=(const WavFile&) = delete;

  const std::string& Path() const { return path_; }

 private:
  std::string path_;
};

}  // namespace benchmarks
