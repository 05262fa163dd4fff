// A project that uses the installed library: prints a file's length in milliseconds.
#include <MediaAccessor/all.h>

#include <cstdio>

int main(int argc, char** argv) {
  unsigned long milliseconds = 0;
  if (argc < 2) return 2;
  if (Quorvex::MediaFileGetMilliseconds(argv[1], milliseconds, true) != Quorvex::QVERR_OK) return 1;
  std::printf("%lu\n", milliseconds);
}
