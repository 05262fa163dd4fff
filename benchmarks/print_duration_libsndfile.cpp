// Prints a file's length in milliseconds, with libsndfile.
#include <sndfile.h>

#include <cstdio>

int main(int argc, char** argv) {
  SF_INFO info{};
  SNDFILE* file = argc < 2 ? nullptr : sf_open(argv[1], SFM_READ, &info);
  if (file == nullptr) return 1;
  std::printf("%lld\n", static_cast<long long>(info.frames * 1000 / info.samplerate));
  sf_close(file);
}
