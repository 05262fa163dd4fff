// Reading a file to its end, averaged to mono: the library's default, and the same by the peers
// with a plain loop behind them. The files stay in the page cache.
#include <MediaAccessor/input_wav_media_file.h>
#include <MediaAccessor/ownership.h>
#include <benchmark/benchmark.h>
#include <opusfile.h>
#include <sndfile.h>

#include <initializer_list>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "benchmarks/audio_files.h"
#include "benchmarks/average.h"
#include "benchmarks/comparison.h"
#include "benchmarks/libavcodec_reader.h"

namespace {

unsigned long long ReadToEnd(Quorvex::CMediaFile& file) {
  unsigned long long total = 0;
  for (;;) {
    const short* samples = nullptr;
    unsigned long frames = 0;
    if (file.ReadBlock(samples, frames) != Quorvex::QVERR_OK) return 0;
    if (frames == 0) return total;
    benchmark::DoNotOptimize(samples);
    total += frames;
  }
}

unsigned long long ReadOurs(const std::string& path) {
  Quorvex::MediaFilePtr file;
  if (Quorvex::MediaFileOpen(path.c_str(), file) != Quorvex::QVERR_OK) return 0;
  return ReadToEnd(*file);
}

// Not by the portable reader, which MediaFileOpen would take for what both can read.
unsigned long long ReadByEngine(const std::string& path) {
  const Quorvex::MediaFilePtr file(Quorvex::CInputWAVMediaFile::CreateInstance());
  if (file->Open(path.c_str()) != Quorvex::QVERR_OK) return 0;
  return ReadToEnd(*file);
}

// Reads an open file to its end, averaged to mono, and closes it. Floating-point files are read as
// such: as short, libsndfile would cut their samples to 0.
template <class Sample>
unsigned long long AverageSndfile(SNDFILE* file, int channels,
                                  sf_count_t (*read)(SNDFILE*, Sample*, sf_count_t)) {
  constexpr sf_count_t kBlock = 8192;  // frames; the fastest for libsndfile of 1024 to 65536
  if (file == nullptr) return 0;
  std::vector<Sample> block(static_cast<std::size_t>(kBlock * channels));
  std::vector<short> mono(static_cast<std::size_t>(kBlock));
  unsigned long long total = 0;
  for (sf_count_t frames = 0; (frames = read(file, block.data(), kBlock)) > 0;) {
    const auto count = static_cast<std::size_t>(frames);
    benchmarks::AverageToMono(block.data(), count, channels, mono.data());
    total += count;
  }
  sf_close(file);
  return total;
}

unsigned long long ReadSndfile(const std::string& path) {
  SF_INFO info{};
  SNDFILE* const file = sf_open(path.c_str(), SFM_READ, &info);
  return (info.format & SF_FORMAT_SUBMASK) == SF_FORMAT_FLOAT
             ? AverageSndfile<float>(file, info.channels, sf_readf_float)
             : AverageSndfile<short>(file, info.channels, sf_readf_short);
}

unsigned long long ReadSndfileVox(const std::string& path) {
  SF_INFO info{};
  info.samplerate = 8000;
  info.channels = 1;
  info.format = SF_FORMAT_RAW | SF_FORMAT_VOX_ADPCM;
  return AverageSndfile<short>(sf_open(path.c_str(), SFM_READ, &info), 1, sf_readf_short);
}

// The bare loop that an application would write, with the buffer that the library recommends.
unsigned long long ReadOpusfile(const std::string& path) {
  OggOpusFile* const file = op_open_file(path.c_str(), nullptr);
  if (file == nullptr) return 0;
  std::vector<short> block(120 * 48 * 2);
  unsigned long long total = 0;
  for (int frames = 0;
       (frames = op_read(file, block.data(), static_cast<int>(block.size()), nullptr)) > 0;) {
    benchmark::DoNotOptimize(block.data());
    total += static_cast<unsigned>(frames);
  }
  op_free(file);
  return total;
}

// Noise in a coding of WAV files, by libsndfile.
struct CodedWavFile : benchmarks::AudioFile {
  CodedWavFile(int coding, int channels, unsigned frequency, unsigned frames)
      : AudioFile(".wav", "", 0) {
    SF_INFO info{};
    info.samplerate = static_cast<int>(frequency);
    info.channels = channels;
    info.format = SF_FORMAT_WAV | coding;
    SNDFILE* const file = sf_open(Path().c_str(), SFM_WRITE, &info);
    std::minstd_rand random;
    std::uniform_real_distribution<float> level(-0.5F, 0.5F);
    std::vector<float> samples(frames * static_cast<unsigned>(channels));
    for (float& sample : samples) sample = level(random);
    sf_write_float(file, samples.data(), static_cast<sf_count_t>(samples.size()));
    sf_close(file);
  }
};

using Reader = unsigned long long (*)(const std::string& path);

void AddReaders(const std::string& job, const std::string& path, Reader ours,
                std::initializer_list<std::pair<const char*, Reader>> peers) {
  benchmarks::Add(job, "ours", "frame", [path, ours] { return ours(path); });
  for (const auto& [who, read] : peers) {
    benchmarks::Add(job, who, "frame", [path, read = read] { return read(path); });
  }
}

}  // namespace

int main(int argc, char** argv) {
  struct Case {
    const char* name;
    int coding;
    int channels;
    int bytesPerSample;
  };
  constexpr Case kWav[] = {{"WAV 16-bit PCM, mono", 1, 1, 2}, {"WAV 16-bit PCM, stereo", 1, 2, 2},
                           {"WAV A-law, mono", 6, 1, 1},      {"WAV A-law, stereo", 6, 2, 1},
                           {"WAV mu-law, mono", 7, 1, 1},     {"WAV mu-law, stereo", 7, 2, 1}};
  constexpr Case kAu[] = {{"AU 16-bit PCM, mono", 3, 1, 2},   {"AU 16-bit PCM, stereo", 3, 2, 2},
                          {"AU 32-bit float, mono", 6, 1, 4}, {"AU 32-bit float, stereo", 6, 2, 4},
                          {"AU mu-law, mono", 1, 1, 1},       {"AU mu-law, stereo", 1, 2, 1}};
  constexpr unsigned kFrequency = 44'100;
  constexpr unsigned kSeconds = 60;
  constexpr unsigned kFrames = kFrequency * kSeconds;
  std::vector<std::unique_ptr<benchmarks::AudioFile>> files;
  for (const Case& c : kWav) {
    files.push_back(std::make_unique<benchmarks::WavFile>(c.coding, c.channels, c.bytesPerSample,
                                                          kFrequency, kFrames));
    AddReaders(c.name, files.back()->Path(), ReadOurs, {{"libsndfile", ReadSndfile}});
  }
  for (const Case& c : kAu) {
    files.push_back(std::make_unique<benchmarks::AuFile>(c.coding, c.channels, c.bytesPerSample,
                                                         kFrequency, kFrames));
    AddReaders(c.name, files.back()->Path(), ReadOurs,
               {{"libsndfile", ReadSndfile}, {"libavcodec", benchmarks::ReadLibavformat}});
  }
  constexpr Case kCoded[] = {{"engine, WAV 16-bit PCM, stereo", SF_FORMAT_PCM_16, 2, 0},
                             {"engine, WAV 24-bit PCM, mono", SF_FORMAT_PCM_24, 1, 0},
                             {"engine, WAV 24-bit PCM, stereo", SF_FORMAT_PCM_24, 2, 0},
                             {"engine, WAV 32-bit float, mono", SF_FORMAT_FLOAT, 1, 0},
                             {"engine, WAV 32-bit float, stereo", SF_FORMAT_FLOAT, 2, 0},
                             {"engine, WAV IMA ADPCM, mono", SF_FORMAT_IMA_ADPCM, 1, 0},
                             {"engine, WAV IMA ADPCM, stereo", SF_FORMAT_IMA_ADPCM, 2, 0},
                             {"engine, WAV Microsoft ADPCM, mono", SF_FORMAT_MS_ADPCM, 1, 0},
                             {"engine, WAV Microsoft ADPCM, stereo", SF_FORMAT_MS_ADPCM, 2, 0},
                             {"engine, WAV GSM 6.10, mono", SF_FORMAT_GSM610, 1, 0}};
  for (const Case& c : kCoded) {
    files.push_back(std::make_unique<CodedWavFile>(c.coding, c.channels, kFrequency, kFrames));
    AddReaders(c.name, files.back()->Path(), ReadByEngine,
               {{"libsndfile", ReadSndfile}, {"libavcodec", benchmarks::ReadLibavformat}});
  }
  files.push_back(std::make_unique<benchmarks::VoxFile>(kFrames / 2));
  AddReaders("VOX", files.back()->Path(), ReadOurs,
             {{"libsndfile", ReadSndfileVox}, {"libavcodec", benchmarks::ReadLibavcodecVox}});
  AddReaders("Opus, stereo", RECORDINGS "/call.opus", ReadOurs, {{"op_read", ReadOpusfile}});
  return benchmarks::RunAll(argc, argv);
}
