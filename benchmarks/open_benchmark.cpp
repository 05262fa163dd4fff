// Opening a WAV file, reading its header and closing it.
#include <MediaAccessor/ownership.h>
#include <sndfile.h>

#include "benchmarks/comparison.h"
#include "benchmarks/wav_file.h"

int main(int argc, char** argv) {
  const benchmarks::WavFile wav(1, 2, 2, 44'100, 44'100);
  const std::string path = wav.Path();
  benchmarks::Add("open, header, close", "ours", "file", [&path] {
    Quorvex::MediaFilePtr file;
    if (Quorvex::MediaFileOpen(path.c_str(), file) != Quorvex::QVERR_OK) return 0ULL;
    return file->GetMilliseconds() == 1000 ? 1ULL : 0ULL;
  });
  benchmarks::Add("open, header, close", "libsndfile", "file", [&path] {
    SF_INFO info{};
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
    if (file == nullptr) return 0ULL;
    sf_close(file);
    return info.frames == 44'100 ? 1ULL : 0ULL;
  });
  return benchmarks::RunAll(argc, argv);
}
