// Resampling noise out of memory in blocks of one size, the streams being without end: through the
// public interface, and by the peers.
#include <MediaAccessor/ownership.h>
#include <benchmark/benchmark.h>
#include <soxr.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "benchmarks/comparison.h"
#include "benchmarks/memory_source.h"
#include "benchmarks/noise.h"
#include "benchmarks/resampling_peers.h"

namespace {

using benchmarks::Conversion;
using benchmarks::Converter;
using benchmarks::MemorySource;
using benchmarks::Noise;

constexpr std::size_t kRunFrames = 65'536;  // of input: peers collect some before they work
constexpr std::size_t kBlockFrames = 4'096;
constexpr int kLevel = 16384;       // half scale, so that nothing clips
constexpr std::size_t kBlocks = 4;  // again and again: they stay in the cache, as just decoded

std::function<unsigned long long()> RunOurs(const Conversion& conversion, std::size_t blockFrames) {
  const auto source = std::make_shared<MemorySource>(
      MemorySource::Format{conversion.input, conversion.channels, blockFrames},
      Noise(kBlocks * blockFrames * conversion.channels, kLevel), true);
  const std::shared_ptr<Quorvex::ResamplingMediaAccessor> accessor(
      Quorvex::ResamplingMediaAccessor::CreateInstance(), Quorvex::ObjectReleaser());
  accessor->SetOutputSamplingFrequency(static_cast<int>(conversion.output));
  accessor->SetSource(source.get());
  return [source, accessor, blockFrames] {
    unsigned long long total = 0;
    for (std::size_t taken = 0; taken < kRunFrames; taken += blockFrames) {
      const short* samples = nullptr;
      unsigned long frames = 0;
      if (accessor->ReadBlock(samples, frames) != Quorvex::QVERR_OK) return 0ULL;
      benchmark::DoNotOptimize(samples);
      total += frames;
    }
    return total;
  };
}

std::function<unsigned long long()> RunPeer(const Conversion& conversion, std::size_t blockFrames,
                                            const Converter& converter) {
  const std::size_t blockSamples = blockFrames * conversion.channels;
  const auto input = std::make_shared<std::vector<short>>(Noise(kBlocks * blockSamples, kLevel));
  const auto output = std::make_shared<std::vector<short>>(conversion.OutputRoom(blockFrames) *
                                                           conversion.channels);
  return [=] {
    unsigned long long total = 0;
    std::size_t block = 0;
    for (std::size_t taken = 0; taken < kRunFrames; taken += blockFrames) {
      total += converter({input->data() + block * blockSamples, blockSamples}, *output);
      benchmark::DoNotOptimize(output->data());
      block = (block + 1) % kBlocks;
    }
    return total;
  };
}

std::string NameOf(const Conversion& conversion) {
  const auto kilohertz = [](unsigned hertz) {
    std::string text = std::to_string(hertz / 1000);
    const unsigned rest = hertz % 1000;
    if (rest % 100 == 0) return rest == 0 ? text : text + "." + std::to_string(rest / 100);
    return text + "." + std::to_string(1000 + rest).substr(1);
  };
  return kilohertz(conversion.input) + " to " + kilohertz(conversion.output) + " kHz";
}

void AddBesideSoxr(const std::string& job, const std::string& unit, const Conversion& conversion,
                   std::size_t blockFrames) {
  benchmarks::Add(job, "ours", unit, RunOurs(conversion, blockFrames));
  benchmarks::Add(job, "soxr MQ", unit,
                  RunPeer(conversion, blockFrames, benchmarks::MakeSoxr(conversion, SOXR_MQ)));
}

void AddFurtherPeers(const std::string& job, const Conversion& conversion) {
  const auto add = [&](const char* who, const Converter& converter) {
    benchmarks::Add(job, who, "output sample", RunPeer(conversion, kBlockFrames, converter));
  };
  add("soxr HQ", benchmarks::MakeSoxr(conversion, SOXR_HQ));
  add("speexdsp 5", benchmarks::MakeSpeex(conversion));
  add("zita", benchmarks::MakeZita(conversion));
  add("samplerate", benchmarks::MakeSamplerate(conversion));
  add("swresample", benchmarks::MakeSwresample(conversion));
}

void AddChannels(Conversion conversion, unsigned channels) {
  const Conversion mono = conversion;
  conversion.channels = channels;
  const std::string job = NameOf(conversion) + ", " + std::to_string(channels) + " channels";
  AddBesideSoxr(job, "output frame", conversion, kBlockFrames);
  benchmarks::Add(job, "ours, mono", "output frame", RunOurs(mono, kBlockFrames));
}

void AddSetUp(const Conversion& conversion) {
  const std::string job = NameOf(conversion) + ", set-up";
  const auto source = std::make_shared<MemorySource>(
      MemorySource::Format{conversion.input, conversion.channels, kBlockFrames},
      Noise(kBlockFrames, kLevel), true);
  benchmarks::Add(job, "ours", "set-up", [=]() -> unsigned long long {
    const Quorvex::ResamplingMediaAccessorPtr accessor(
        Quorvex::ResamplingMediaAccessor::CreateInstance());
    accessor->SetOutputSamplingFrequency(static_cast<int>(conversion.output));
    return accessor->SetSource(source.get()) == Quorvex::QVERR_OK ? 1 : 0;
  });
  benchmarks::Add(job, "soxr MQ", "set-up", [=]() -> unsigned long long {
    return benchmarks::SetUpSoxr(conversion, SOXR_MQ) ? 1 : 0;
  });
}

}  // namespace

int main(int argc, char** argv) {
  constexpr Conversion kTo16 = {44'100, 16'000, 1};
  constexpr Conversion kPairs[] = {{8'000, 16'000, 1},  {16'000, 8'000, 1}, kTo16,
                                   {48'000, 16'000, 1}, {48'000, 8'000, 1}, {8'000, 44'100, 1}};
  for (const Conversion& pair : kPairs) {
    AddBesideSoxr(NameOf(pair), "output sample", pair, kBlockFrames);
    if (pair.input == kTo16.input || pair.output == kTo16.output / 2) {
      AddFurtherPeers(NameOf(pair), pair);
    }
  }
  constexpr Conversion kCoprime = {44'101, 16'000, 1};
  AddBesideSoxr(NameOf(kCoprime), "output sample", kCoprime, kBlockFrames);
  AddBesideSoxr(NameOf(kPairs[0]) + ", blocks of 160 frames", "output sample", kPairs[0], 160);
  AddChannels(kTo16, 2);
  AddChannels(kTo16, 6);
  AddChannels({48'000, 8'000, 1}, 6);
  AddSetUp(kTo16);

  // Many short turns of each rather than few long ones.
  std::string turn = "--benchmark_min_time=0.05";
  std::vector<char*> arguments(argv, argv + argc);
  arguments.insert(arguments.begin() + 1, turn.data());
  return benchmarks::RunAll(static_cast<int>(arguments.size()), arguments.data());
}
