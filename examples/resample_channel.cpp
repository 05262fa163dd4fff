// One channel of a recording at another sampling frequency, such as a recogniser of speech wants
// it.
//     resample_channel IN CHANNEL HZ OUT.wav     replaces OUT.wav
#include <MediaAccessor/all.h>

#include <cstdio>
#include <cstdlib>

namespace {

using namespace Quorvex;

int Fail(const char* subject, QVERRORCODE_TAG result) {
  std::fprintf(stderr, "%s: %s\n", subject, MediaAccessorGetResultMeaning(result));
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 5) return 2;
  // No link of the chain owns the one before it, so they are declared from the inside outwards: the
  // outermost is released first.
  MediaFilePtr file;
  QVERRORCODE_TAG result = MediaFileOpen(argv[1], file);
  // A file chooses among its channels itself; what reads from it gets that one alone.
  if (result == QVERR_OK) result = file->SelectChannel(std::atoi(argv[2]));
  if (result != QVERR_OK) return Fail(argv[1], result);

  const ResamplingMediaAccessorPtr resampler(ResamplingMediaAccessor::CreateInstance());
  const WAVFileWriterPtr writer(CWAVFileWriter::CreateInstance());
  if (resampler == nullptr || writer == nullptr) return Fail(argv[0], QVERR_CREATE_FAILED);
  // What does not suit the resampler shows when it is read.
  resampler->SetOutputSamplingFrequency(std::atoi(argv[3]));
  result = resampler->SetSource(file.get());
  // The writer pulls the whole chain to its end.
  if (result == QVERR_OK) result = writer->WriteFile(resampler.get(), argv[4], true);
  return result == QVERR_OK ? 0 : Fail(argv[4], result);
}
