// Prints a file's length in milliseconds, with this library.
#include <MediaAccessor/media_file_functions.h>

#include <cstdio>

int main(int argc, char** argv) {
  unsigned long milliseconds = 0;
  if (argc < 2) return 2;
  if (Quorvex::MediaFileGetMilliseconds(argv[1], milliseconds, false) != Quorvex::QVERR_OK)
    return 1;
  std::printf("%lu\n", milliseconds);
}
