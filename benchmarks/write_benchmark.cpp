// Writing 60 s of 44.1 kHz stereo as a WAV file, from memory in blocks of one size, and by plain
// write() of the same blocks. Both files are in the directory for temporary files, and replace what
// the turn before left.
#include <MediaAccessor/media_accessor.h>
#include <MediaAccessor/ownership.h>
#include <MediaAccessor/wav_file_writer.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "benchmarks/audio_files.h"
#include "benchmarks/comparison.h"

namespace {

constexpr unsigned long kChannels = 2;
constexpr unsigned long kFrequency = 44'100;
constexpr unsigned long kFrames = 60 * kFrequency;
constexpr unsigned long kFrameBytes = kChannels * sizeof(short);

// Delivers the same block again and again.
class Source final : public Quorvex::CMediaAccessor {
 public:
  explicit Source(const std::vector<short>& block) : block_(block) {}

  unsigned long GetSamplingFrequency() const override { return kFrequency; }
  unsigned long GetChannelCount() const override { return kChannels; }
  Quorvex::QVERRORCODE_TAG ReadBlock(const short*& samples, unsigned long& frames, void*) override {
    samples = block_.data();
    frames = std::min<unsigned long>(kFrames - done_, block_.size() / kChannels);
    done_ += frames;
    return Quorvex::QVERR_OK;
  }
  using CMediaAccessor::GetDescription;
  unsigned long GetDescription(wchar_t*, unsigned long) const override { return 0; }

 private:
  const std::vector<short>& block_;
  unsigned long done_ = 0;
};

unsigned long long WriteOurs(const std::vector<short>& block, const std::string& path) {
  Source source(block);
  const Quorvex::WAVFileWriterPtr writer(Quorvex::CWAVFileWriter::CreateInstance());
  return writer->WriteFile(&source, path.c_str(), true) == Quorvex::QVERR_OK ? kFrames : 0;
}

unsigned long long WritePlain(const std::vector<short>& block, const std::string& path) {
  const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  unsigned long left = kFrames * kFrameBytes;
  while (left > 0) {
    const ssize_t written = write(file, block.data(), std::min(left, block.size() * sizeof(short)));
    if (written <= 0) break;
    left -= static_cast<unsigned long>(written);
  }
  return close(file) == 0 && left == 0 ? kFrames : 0;
}

// Its name, and its end.
struct EmptyFile : benchmarks::AudioFile {
  EmptyFile() : AudioFile(".wav", "", 0) {}
};

}  // namespace

int main(int argc, char** argv) {
  const EmptyFile ours, plain;
  std::vector<std::vector<short>> blocks;
  for (const std::size_t bytes : {std::size_t{4096}, std::size_t{65'536}}) {
    blocks.emplace_back(bytes / sizeof(short));
  }
  std::minstd_rand random;
  for (std::vector<short>& block : blocks) {
    for (short& sample : block) sample = static_cast<short>(random() >> 8);
    const std::string job =
        "WAV 16-bit PCM, stereo, blocks of " + std::to_string(block.size() * sizeof(short));
    benchmarks::Add(job, "ours", "frame", [&] { return WriteOurs(block, ours.Path()); });
    benchmarks::Add(job, "write()", "frame", [&] { return WritePlain(block, plain.Path()); });
  }
  return benchmarks::RunAll(argc, argv);
}
