// The fuzzer's bytes as a file, and what a caller does with an opened one.
#pragma once

#include <MediaAccessor/media_file_factory.h>
#include <MediaAccessor/ownership.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace fuzz {

/// Writes the bytes to a file of this process, replaced at each call. @return its path.
inline std::string FileOf(const std::uint8_t* data, std::size_t size, const char* extension) {
  struct Scratch {
    Scratch() {
      std::string name =
          (std::filesystem::exists("/dev/shm") ? "/dev/shm/fuzz-XXXXXX" : "/tmp/fuzz-XXXXXX");
      if (mkdtemp(name.data()) == nullptr) std::abort();
      directory = name;
    }
    ~Scratch() {
      std::error_code error;
      std::filesystem::remove_all(directory, error);
    }
    std::string directory;
  };
  static const Scratch scratch;
  std::string path = scratch.directory + "/x" + extension;
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  return path;
}

/// What a reader's estimate of the length is held to.
enum class Length {
  kKnown,     // the frames that are read, give or take the part of a frame at the end
  kEstimate,  // anything: the file tells it in one place and has its audio in others
};

/// Asks every question and reads to the end, past failures, with the channels chosen by `choice`.
/// Every sample is touched, so that a sanitizer sees a block that is too short.
/// @return false for a file that was left before its end, having too many frames: a byte of G.723.1
///         may be 240 of them.
inline bool Exercise(Quorvex::CMediaFile& file, std::uint8_t choice, Length length) {
  using namespace Quorvex;
  constexpr int kMostFailures = 100;
  constexpr unsigned long long kMostFrames = 100'000;
  char text[64];
  file.GetFormatDescription(text, sizeof text);
  file.GetDescription(text, sizeof text);
  const unsigned long long estimate = file.GetMilliseconds();
  const unsigned long long frequency = file.GetSamplingFrequency();
  if (file.GetTrackChannelCount() < 1 || frequency < 1) std::abort();
  if ((choice & 1) != 0) file.SelectChannels(nullptr, 0, kChannelModeSeparate);
  // After a refused selection nothing is selected, and so nothing but silence is delivered.
  const bool isRefused = (choice & 2) != 0 && file.SelectChannel(choice >> 2) != QVERR_OK;
  unsigned long long frames = 0;
  volatile int sink = 0;
  for (int failures = 0; failures < kMostFailures;) {
    const short* samples = nullptr;
    unsigned long count = 0;
    if (file.ReadBlock(samples, count) != QVERR_OK) {
      if (samples != nullptr || count != 0) std::abort();
      ++failures;
      continue;
    }
    if (count == 0) break;
    const unsigned long total = count * file.GetChannelCount();
    int sum = 0;
    for (unsigned long i = 0; i < total; ++i) sum += samples[i] & 1;
    sink = sink + sum;
    frames += count;
    if (frames > kMostFrames) return false;
  }
  if (length == Length::kEstimate || isRefused) return true;
  // Its arithmetic may be one millisecond short.
  if (frames * 1000 / frequency > estimate + 1) std::abort();
  if (estimate > (frames + 1) * 1000 / frequency) std::abort();
  return true;
}

/// One input of a target: the bytes as a file, through one reader, used twice as one object.
inline int FuzzReader(const Quorvex::CMediaFileFactory& factory, const char* extension,
                      Length length, const std::uint8_t* data, std::size_t size) {
  const std::string path = FileOf(data, size, extension);
  const Quorvex::MediaFilePtr file(factory.CreateMediaFile());
  for (const std::uint8_t choice : {std::uint8_t{0}, size > 0 ? data[0] : std::uint8_t{3}}) {
    if (file->Open(path.c_str()) != Quorvex::QVERR_OK) {
      if (file->IsOpen()) std::abort();
      continue;
    }
    Exercise(*file, choice, length);
    if (file->Close() != Quorvex::QVERR_OK) std::abort();
  }
  return 0;
}

}  // namespace fuzz
