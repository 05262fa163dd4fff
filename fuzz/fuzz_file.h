// The fuzzer's bytes as a file, and what a caller does with an opened one.
#pragma once

#include <MediaAccessor/ownership.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace fuzz {

/// Writes the bytes to a file of this process, replaced at each call. @return its path.
inline const std::string& FileOf(const std::uint8_t* data, std::size_t size,
                                 const char* extension) {
  struct Scratch {
    explicit Scratch(const char* ending) {
      std::string name =
          (std::filesystem::exists("/dev/shm") ? "/dev/shm/fuzz-XXXXXX" : "/tmp/fuzz-XXXXXX");
      if (mkdtemp(name.data()) == nullptr) std::abort();
      directory = name;
      path = name + "/x" + ending;
    }
    ~Scratch() {
      std::error_code error;
      std::filesystem::remove_all(directory, error);
    }
    std::string directory;
    std::string path;
  };
  static const Scratch scratch(extension);
  std::ofstream file(scratch.path, std::ios::binary | std::ios::trunc);
  file.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  return scratch.path;
}

/// Asks every question and reads to the end, with the channels chosen by `choice`. Every sample is
/// touched, so that a sanitizer sees a block that is too short.
inline void Exercise(Quorvex::CMediaFile& file, std::uint8_t choice) {
  using namespace Quorvex;
  char text[64];
  file.GetFormatDescription(text, sizeof text);
  file.GetDescription(text, sizeof text);
  const unsigned long estimate = file.GetMilliseconds();
  const int channels = file.GetTrackChannelCount();
  if (channels < 1 || file.GetSamplingFrequency() < 1) std::abort();
  if ((choice & 1) != 0) file.SelectChannels(nullptr, 0, kChannelModeSeparate);
  // After a refused selection nothing is selected, and so nothing but silence is delivered.
  const bool isRefused = (choice & 2) != 0 && file.SelectChannel(choice >> 2) != QVERR_OK;
  unsigned long long frames = 0;
  volatile int sink = 0;
  for (;;) {
    const short* samples = nullptr;
    unsigned long count = 0;
    if (file.ReadBlock(samples, count) != QVERR_OK) {
      if (samples != nullptr || count != 0) std::abort();
      return;
    }
    if (count == 0) break;
    const unsigned long total = count * file.GetChannelCount();
    int sum = 0;
    for (unsigned long i = 0; i < total; ++i) sum += samples[i] & 1;
    sink = sink + sum;
    frames += count;
  }
  // A reader that knows its length tells the truth about it.
  if (!isRefused && estimate != frames * 1000 / file.GetSamplingFrequency()) std::abort();
}

}  // namespace fuzz
