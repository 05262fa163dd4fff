// Reading a file to its end, averaged to mono: the library's default, and the same by libsndfile
// with a plain loop behind it. The files stay in the page cache.
#include <MediaAccessor/ownership.h>
#include <benchmark/benchmark.h>
#include <sndfile.h>

#include <string>
#include <vector>

#include "benchmarks/comparison.h"
#include "benchmarks/wav_file.h"

namespace {

unsigned long long ReadOurs(const std::string& path) {
  Quorvex::MediaFilePtr file;
  if (Quorvex::MediaFileOpen(path.c_str(), file) != Quorvex::QVERR_OK) return 0;
  unsigned long long total = 0;
  for (;;) {
    const short* samples = nullptr;
    unsigned long frames = 0;
    if (file->ReadBlock(samples, frames) != Quorvex::QVERR_OK) return 0;
    if (frames == 0) return total;
    benchmark::DoNotOptimize(samples);
    total += frames;
  }
}

unsigned long long ReadSndfile(const std::string& path) {
  constexpr sf_count_t kBlock = 8192;  // frames; the fastest for libsndfile of 1024 to 65536
  SF_INFO info{};
  SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
  if (file == nullptr) return 0;
  std::vector<short> block(static_cast<std::size_t>(kBlock * info.channels));
  std::vector<short> mono(static_cast<std::size_t>(kBlock));
  unsigned long long total = 0;
  for (sf_count_t frames = 0; (frames = sf_readf_short(file, block.data(), kBlock)) > 0;) {
    const auto count = static_cast<std::size_t>(frames);
    const short* result = block.data();
    if (info.channels == 2) {
      for (std::size_t f = 0; f < count; ++f) {
        mono[f] = static_cast<short>((block[2 * f] + block[2 * f + 1]) / 2);
      }
      result = mono.data();
    }
    benchmark::DoNotOptimize(result);
    benchmark::ClobberMemory();
    total += count;
  }
  sf_close(file);
  return total;
}

}  // namespace

int main(int argc, char** argv) {
  struct Case {
    const char* name;
    int tag;
    int channels;
    int bytesPerSample;
  };
  constexpr Case kCases[] = {{"16-bit PCM mono", 1, 1, 2}, {"16-bit PCM stereo to mono", 1, 2, 2},
                             {"A-law mono", 6, 1, 1},      {"A-law stereo to mono", 6, 2, 1},
                             {"mu-law mono", 7, 1, 1},     {"mu-law stereo to mono", 7, 2, 1}};
  constexpr unsigned kFrequency = 44'100;
  constexpr unsigned kSeconds = 300;
  std::vector<std::unique_ptr<benchmarks::WavFile>> files;
  for (const Case& c : kCases) {
    files.push_back(std::make_unique<benchmarks::WavFile>(c.tag, c.channels, c.bytesPerSample,
                                                          kFrequency, kFrequency * kSeconds));
    const std::string path = files.back()->Path();
    benchmarks::Add(c.name, "ours", "frame", [path] { return ReadOurs(path); });
    benchmarks::Add(c.name, "libsndfile", "frame", [path] { return ReadSndfile(path); });
  }
  return benchmarks::RunAll(argc, argv);
}
