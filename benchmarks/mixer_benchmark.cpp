// The mixer alone, beside a memcpy of the bytes that go in.
#include <MediaAccessor/ownership.h>
#include <benchmark/benchmark.h>

#include <cstring>
#include <numeric>
#include <string>
#include <vector>

#include "benchmarks/comparison.h"
#include "benchmarks/noise.h"

namespace {

constexpr std::size_t kFrames = 4096;

void AddMixer(const std::string& job, int channels, const std::vector<int>& selected, int mode) {
  const auto input = std::make_shared<std::vector<short>>(
      benchmarks::Noise(kFrames * static_cast<std::size_t>(channels), 32767));
  std::shared_ptr<Quorvex::MediaAccessorMixer> mixer(Quorvex::MediaAccessorMixer::CreateInstance(),
                                                     Quorvex::ObjectReleaser());
  mixer->SetChannelCount(channels);
  mixer->SelectChannels(selected.data(), static_cast<int>(selected.size()), mode);
  benchmarks::Add(job, "ours", "frame", [=] {
    const short* samples = nullptr;
    unsigned long frames = 0;
    mixer->Write(input->data(), static_cast<unsigned long>(input->size() * sizeof(short)));
    mixer->ReadBlock(samples, frames);
    benchmark::DoNotOptimize(samples);
    return static_cast<unsigned long long>(frames);
  });
  const auto copy = std::make_shared<std::vector<short>>(input->size());
  benchmarks::Add(job, "memcpy", "frame", [=] {
    std::memcpy(copy->data(), input->data(), input->size() * sizeof(short));
    benchmark::DoNotOptimize(copy->data());
    benchmark::ClobberMemory();
    return static_cast<unsigned long long>(kFrames);
  });
}

}  // namespace

int main(int argc, char** argv) {
  for (const int channels : {2, 6, 8}) {
    std::vector<int> all(static_cast<std::size_t>(channels));
    std::iota(all.begin(), all.end(), 0);
    const std::vector<int> last = {channels - 1};
    const std::vector<int> allButFirst(all.begin() + 1, all.end());
    const std::string name = std::to_string(channels) + " channels, ";
    AddMixer(name + "average of all", channels, all, Quorvex::kChannelModeAverage);
    AddMixer(name + "sum of all", channels, all, Quorvex::kChannelModeSum);
    AddMixer(name + "all separate", channels, all, Quorvex::kChannelModeSeparate);
    AddMixer(name + "one alone", channels, last, Quorvex::kChannelModeAverage);
    if (channels > 2) {
      AddMixer(name + "all but one separate", channels, allButFirst, Quorvex::kChannelModeSeparate);
      AddMixer(name + "average of all but one", channels, allButFirst,
               Quorvex::kChannelModeAverage);
    }
  }
  return benchmarks::RunAll(argc, argv);
}
