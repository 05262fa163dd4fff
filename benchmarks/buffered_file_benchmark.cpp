// Reading 256 MiB in pieces of 64 KiB through the buffered file, and by plain read() of the same
// pieces. The file stays in the page cache.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <string>
#include <vector>

#include "benchmarks/audio_files.h"
#include "benchmarks/comparison.h"
#include "platform/text.h"
#include "support/ft_file.h"

namespace {

constexpr unsigned long long kBytes = 256ULL << 20;
constexpr std::uint32_t kPiece = 64 << 10;

unsigned long long ReadBuffered(const std::wstring& path) {
  Quorvex::CFTFile file;
  std::vector<std::uint8_t> piece(kPiece);
  unsigned long long done = 0;
  for (file.Open(path, false); done < kBytes; done += kPiece) {
    file.Read(piece.data(), kPiece);
    benchmark::DoNotOptimize(piece.data());
    benchmark::ClobberMemory();
  }
  return done;
}

unsigned long long ReadPlain(const std::string& path) {
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  std::vector<std::uint8_t> piece(kPiece);
  unsigned long long done = 0;
  while (done < kBytes && read(descriptor, piece.data(), kPiece) == kPiece) {
    benchmark::DoNotOptimize(piece.data());
    benchmark::ClobberMemory();
    done += kPiece;
  }
  close(descriptor);
  return done == kBytes ? done : 0;
}

}  // namespace

int main(int argc, char** argv) {
  const benchmarks::WavFile wav(1, 1, 2, 8000, kBytes / 2);
  const std::string path = wav.Path();
  const std::string job = "256 MiB in 64 KiB pieces";
  benchmarks::Add(job, "ours", "byte",
                  [wide = Quorvex::platform::Widen(path)] { return ReadBuffered(wide); });
  benchmarks::Add(job, "read()", "byte", [path] { return ReadPlain(path); });
  return benchmarks::RunAll(argc, argv);
}
