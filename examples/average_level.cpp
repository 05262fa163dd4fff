#include <MediaAccessor/all.h>
#include <cstdio>
#include <cstdlib>
int main(int argc, char** argv) {
  Quorvex::MediaFilePtr file;
  if (argc < 2 || Quorvex::MediaFileOpen(argv[1], file) != Quorvex::QVERR_OK) return 1;
  const short* samples = nullptr;
  unsigned long frames = 0, total = 0;
  double sum = 0;
  while (file->ReadBlock(samples, frames) == Quorvex::QVERR_OK && frames > 0) {
    for (unsigned long i = 0; i < frames; ++i) sum += std::abs(samples[i]);
    total += frames;
  }
  std::printf("%lu frames, average level %.0f\n", total, total > 0 ? sum / total : 0.0);
}
