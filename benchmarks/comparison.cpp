// Google Benchmark does the timing, its repetitions interleaved at random; the reporter below turns
// them into medians and ratios.
#include "benchmarks/comparison.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <utility>
#include <vector>

namespace benchmarks {
namespace {

struct Entry {
  std::string job;
  std::string who;
  std::string unit;
  std::vector<double> nanoseconds;  // a unit, one value a repetition

  std::string Name() const { return job + ": " + who; }

  double Median() {
    if (nanoseconds.empty()) return 0.0;
    std::sort(nanoseconds.begin(), nanoseconds.end());
    return nanoseconds[nanoseconds.size() / 2];
  }
};

std::vector<Entry>& Entries() {
  static std::vector<Entry> entries;
  return entries;
}

class RatioReporter final : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override { return true; }

  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      const auto rate = run.counters.find("units");
      if (run.run_type != Run::RT_Iteration || rate == run.counters.end()) continue;
      for (Entry& entry : Entries()) {
        if (entry.Name() == run.run_name.function_name) {
          entry.nanoseconds.push_back(1e9 / rate->second.value);
        }
      }
    }
  }

  void Finalize() override {
    std::map<std::string, double> oursOfJob;
    for (Entry& entry : Entries()) {
      const double median = entry.Median();
      if (median == 0.0) continue;
      const auto [ours, isFirst] = oursOfJob.emplace(entry.job, median);
      std::printf("%-44s %-12s %10.3f ns a %s", entry.job.c_str(), entry.who.c_str(), median,
                  entry.unit.c_str());
      if (!isFirst) std::printf("   ours is %.2f of it", ours->second / median);
      std::printf("\n");
    }
  }
};

}  // namespace

void Add(const std::string& job, const std::string& who, const std::string& unit,
         std::function<unsigned long long()> run) {
  Entries().push_back({job, who, unit, {}});
  benchmark::RegisterBenchmark(Entries().back().Name().c_str(), [run = std::move(run)](
                                                                    benchmark::State& state) {
    unsigned long long units = 0;
    for (auto _ : state) {
      const unsigned long long done = run();
      if (done == 0) return state.SkipWithError("the job failed");
      units += done;
    }
    state.counters["units"] =
        benchmark::Counter(static_cast<double>(units), benchmark::Counter::kIsRate);
  })->UseRealTime();
}

int RunAll(int argc, char** argv) {
  std::vector<char*> arguments(argv, argv + argc);
  std::string repetitions = "--benchmark_repetitions=11";
  std::string interleaving = "--benchmark_enable_random_interleaving=true";
  arguments.insert(arguments.begin() + 1, {repetitions.data(), interleaving.data()});
  int count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 2;
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  return 0;
}

}  // namespace benchmarks
