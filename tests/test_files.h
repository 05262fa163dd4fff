// Files for the tests: fixtures to read, and a directory to write into.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace tests {

using Bytes = std::vector<unsigned char>;

/// Names are UTF-8 here on every system; on Linux they may be any bytes.
inline std::filesystem::path Path(const std::string& name) {
  return std::filesystem::path(std::u8string(name.begin(), name.end()));
}

inline std::string Fixture(const std::string& name) {
  return std::string(MEDIA_ACCESSOR_FIXTURES) + "/" + name;
}

inline Bytes ReadBytes(const std::string& path) {
  std::ifstream file(Path(path), std::ios::binary);
  return Bytes(std::istreambuf_iterator<char>(file), {});
}

inline void WriteBytes(const std::string& path, const Bytes& bytes) {
  std::ofstream file(Path(path), std::ios::binary);
  file.write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
}

/// The 16-bit little-endian samples of a file.
inline std::vector<short> ReadSamples(const std::string& path) {
  const Bytes bytes = ReadBytes(path);
  std::vector<short> samples;
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    samples.push_back(static_cast<short>(bytes[i] | bytes[i + 1] << 8));
  }
  return samples;
}

/// A directory of its own for each object, removed with all it holds.
class TemporaryDirectory {
 public:
  TemporaryDirectory()
      : path_(std::filesystem::temp_directory_path() /
              ("media-accessor-test-" + std::to_string(std::random_device{}()))) {
    std::filesystem::create_directories(path_);
  }
  ~TemporaryDirectory() {
    std::error_code error;
    std::filesystem::remove_all(path_, error);
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  std::string File(const std::string& name) const {
    const std::u8string path = (path_ / Path(name)).u8string();
    return std::string(path.begin(), path.end());
  }

 private:
  std::filesystem::path path_;
};

}  // namespace tests
