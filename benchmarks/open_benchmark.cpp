// Opening a file, reading its header and closing it.
#include <MediaAccessor/ownership.h>
#include <sndfile.h>

#include <string>

#include "benchmarks/audio_files.h"
#include "benchmarks/comparison.h"

namespace {

constexpr unsigned kFrequency = 44'100;
constexpr unsigned kVoxFrequency = 6000;  // the library's default

void AddOpening(const std::string& job, const std::string& path, SF_INFO known) {
  benchmarks::Add(job, "ours", "file", [path] {
    Quorvex::MediaFilePtr file;
    if (Quorvex::MediaFileOpen(path.c_str(), file) != Quorvex::QVERR_OK) return 0ULL;
    return file->GetMilliseconds() == 1000 ? 1ULL : 0ULL;
  });
  benchmarks::Add(job, "libsndfile", "file", [path, known] {
    SF_INFO info = known;
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
    if (file == nullptr) return 0ULL;
    sf_close(file);
    return info.frames == info.samplerate ? 1ULL : 0ULL;
  });
}

}  // namespace

int main(int argc, char** argv) {
  const benchmarks::WavFile wav(1, 2, 2, kFrequency, kFrequency);
  const benchmarks::WavFile wide(1, 2, 3, kFrequency, kFrequency);
  const benchmarks::AuFile au(3, 2, 2, kFrequency, kFrequency);
  const benchmarks::VoxFile vox(kVoxFrequency / 2);
  AddOpening("open WAV, header, close", wav.Path(), {});
  AddOpening("open WAV of 24 bits, header, close", wide.Path(), {});
  AddOpening("open AU, header, close", au.Path(), {});
  SF_INFO known{};
  known.samplerate = kVoxFrequency;
  known.channels = 1;
  known.format = SF_FORMAT_RAW | SF_FORMAT_VOX_ADPCM;
  AddOpening("open VOX, close", vox.Path(), known);
  return benchmarks::RunAll(argc, argv);
}
