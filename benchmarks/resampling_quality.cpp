// Measures what resampling does to sinusoids and prints a table with a line for each pair of
// frequencies:
//     resampling_quality          the library, through its public interface
//     resampling_quality soxr     libsoxr at its medium quality, which the limits are not for
// It fails when a value of the library's is beyond its limit, and marks that with '!'.
//
// Every value comes from a least-squares fit of sinusoids at their exact frequencies, over a long
// window away from the ends. No frequency has a short period, so that rounding is noise. "Lower
// Nyquist" is half the lower of the two frequencies.
//
//     SINAD        a tone at -6 dBFS against all else but a constant, which is mostly the rounding
//                  of input and output; the worst of tones to 0.8 of the lower Nyquist. Beside it,
//                  how far it is from that of the exact filter, rounded to 16 bits
//     off          the largest difference from the exact filter's rounded samples, ends included
//     rejection    what should not be there against a passed tone of the same level, the worst of
//                  tones that fall on 1.1 to 1.8 of the lower Nyquist: the line where a tone from
//                  above it comes to lie, or of a tone from below it all images that a higher
//                  output frequency shows. Lines, not all the noise: that is in SINAD, and more
//                  than 92 dB below a tone at -6 dBFS is less than the rounding. A second tone, 6
//                  dB below, is there so that the rounding of what is left is noise, and is the
//                  passed one
//     ripple       between the highest and the lowest gain to 0.8 of the lower Nyquist
//     at 0.9       the gain at 0.9 of the lower Nyquist; beside it, how far that is from the exact
//                  filter's
//     at 0         the gain of a constant
#include <MediaAccessor/ownership.h>
#include <soxr.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "benchmarks/memory_source.h"
#include "benchmarks/resampling_peers.h"
#include "benchmarks/sinusoids.h"
#include "tests/ideal_resampling.h"

namespace {

using benchmarks::FitSinusoids;
using benchmarks::MakeSinusoids;
using benchmarks::Sinusoid;
using benchmarks::SinusoidFit;
using tests::IdealResampling;

constexpr std::size_t kWindow = 32'768;   // output samples that are looked at
constexpr std::size_t kSettling = 2'000;  // and so many on either side that are not
constexpr double kLevel = 16384;          // -6 dBFS

constexpr double kSinadLimit = 0.5;  // dB from the exact filter's
constexpr int kOffLimit = 1;
constexpr double kRejectionLimit = 92.5;  // dB
constexpr double kRippleLimit = 0.003;    // dB
constexpr double kGainLimit = 0.02;       // dB from the exact filter's

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

double Decibels(double ratio) { return 20 * std::log10(ratio); }

struct Pair {
  unsigned input;   // Hz
  unsigned output;  // Hz

  double LowerNyquist() const { return std::min(input, output) / 2.0; }
  std::size_t InputSamples() const { return (kWindow + 2 * kSettling) * input / output; }
};

using Resample = std::vector<short> (*)(const Pair& pair, const std::vector<short>& input);

std::vector<short> ResampleByOurs(const Pair& pair, const std::vector<short>& input) {
  benchmarks::MemorySource source({pair.input, 1, 4096}, input, false);
  const Quorvex::ResamplingMediaAccessorPtr accessor(
      Quorvex::ResamplingMediaAccessor::CreateInstance());
  accessor->SetSource(&source);
  accessor->SetOutputSamplingFrequency(static_cast<int>(pair.output));
  std::vector<short> output;
  for (;;) {
    const short* samples = nullptr;
    unsigned long frames = 0;
    if (accessor->ReadBlock(samples, frames) != Quorvex::QVERR_OK || frames == 0) return output;
    output.insert(output.end(), samples, samples + frames);
  }
}

std::vector<short> ResampleBySoxr(const Pair& pair, const std::vector<short>& input) {
  const benchmarks::Conversion conversion = {pair.input, pair.output, 1};
  std::vector<short> output(2 * conversion.OutputRoom(input.size()));
  const benchmarks::Converter convert = benchmarks::MakeSoxr(conversion, SOXR_MQ);
  std::size_t made = 0;
  for (const std::span<const short> part : {std::span<const short>(input), {}}) {
    made += convert(part, std::span(output).subspan(made));
  }
  output.resize(made);
  return output;
}

// The window of an output, which must be long enough for it.
template <class Sample>
std::vector<double> Settled(const std::vector<Sample>& output) {
  if (output.size() < kSettling + kWindow) {
    std::fprintf(stderr, "resampling_quality: the output is too short\n");
    std::exit(1);
  }
  const auto begin = output.begin() + kSettling;
  return std::vector<double>(begin, begin + kWindow);
}

// A resampler for one pair of frequencies, and the exact filter where it is to be like that.
struct Bench {
  Pair pair;
  Resample resample;
  std::optional<IdealResampling> exact;

  std::vector<short> Input(std::initializer_list<Sinusoid> sinusoids, double constant = 0) const {
    std::vector<Sinusoid> inCycles;
    for (const Sinusoid& each : sinusoids) {
      inCycles.push_back({each.frequency / pair.input, each.amplitude});
    }
    return MakeSinusoids(pair.InputSamples(), inCycles, constant);
  }
  template <class Sample>
  SinusoidFit Fit(const std::vector<Sample>& output, std::vector<double> frequencies) const {
    for (double& each : frequencies) each /= pair.output;
    return FitSinusoids(Settled(output), frequencies);
  }
};

struct Quality {
  double sinad = 0;
  double sinadLost = kNone;  // to the exact filter
  int off = -1;
  double rejection = kNone;
  double ripple = 0;
  double highGain = 0;  // at 0.9
  double highGainOff = kNone;
  double constantGain = 0;
};

double SinadOf(const SinusoidFit& fit) {
  return Decibels(fit.amplitudes[0] / std::sqrt(2 * fit.residual));
}

int LargestDifference(const std::vector<short>& a, const std::vector<short>& b) {
  if (a.size() != b.size()) return std::numeric_limits<int>::max();
  int largest = 0;
  for (std::size_t i = 0; i < a.size(); ++i) largest = std::max(largest, std::abs(a[i] - b[i]));
  return largest;
}

void MeasureSinad(Bench& bench, Quality& quality) {
  quality.sinad = std::numeric_limits<double>::max();
  double exactSinad = quality.sinad;
  for (const double place : {0.0531, 0.1237, 0.2719, 0.4141, 0.5477, 0.6871, 0.7993}) {
    const double tone = place * bench.pair.LowerNyquist();
    const std::vector<short> input = bench.Input({{tone, kLevel}});
    const std::vector<short> output = bench.resample(bench.pair, input);
    quality.sinad = std::min(quality.sinad, SinadOf(bench.Fit(output, {tone})));
    if (!bench.exact) continue;
    std::vector<short> rounded;
    for (const double sample : bench.exact->Of(input)) {
      rounded.push_back(static_cast<short>(std::lround(sample)));
    }
    exactSinad = std::min(exactSinad, SinadOf(bench.Fit(rounded, {tone})));
    quality.off = std::max(quality.off, LargestDifference(output, rounded));
  }
  if (bench.exact) quality.sinadLost = exactSinad - quality.sinad;
}

// Where the tone and its images come to lie in the output, the tone first.
std::vector<double> LinesOf(double tone, const Pair& pair) {
  const double tooNear = 2.0 * pair.output / static_cast<double>(kWindow);
  std::vector<double> lines;
  const auto add = [&](double frequency) {
    const double folded = std::abs(std::remainder(frequency, pair.output));
    const auto isNear = [&](double line) { return std::abs(line - folded) < tooNear; };
    if (std::none_of(lines.begin(), lines.end(), isNear)) lines.push_back(folded);
  };
  add(tone);
  for (double image = pair.input; image - tone < pair.output; image += pair.input) {
    if (pair.input > pair.output) break;
    add(image - tone);
    add(image + tone);
  }
  return lines;
}

void MeasureRejection(Bench& bench, Quality& quality) {
  const double nyquist = bench.pair.LowerNyquist();
  const bool isUp = bench.pair.output > bench.pair.input;
  const double passed = 0.1337 * nyquist;
  // The filter's ripples are 0.03 apart, and highest at the beginning.
  for (double place = 1.1003; place < 1.805; place += place < 1.2 ? 0.01 : 0.05) {
    const double tone = (isUp ? 2 - place : place) * nyquist;
    if (tone > 0.98 * bench.pair.input / 2) break;
    const std::vector<short> input = bench.Input({{tone, kLevel}, {passed, kLevel / 2}});
    std::vector<double> lines = LinesOf(tone, bench.pair);
    lines.insert(lines.begin(), passed);
    const SinusoidFit fit = bench.Fit(bench.resample(bench.pair, input), lines);
    double unwanted = 0;
    for (std::size_t i = isUp ? 2 : 1; i < lines.size(); ++i) {
      unwanted += fit.amplitudes[i] * fit.amplitudes[i];
    }
    const double rejection = Decibels(2 * fit.amplitudes[0] / std::sqrt(unwanted));
    quality.rejection = std::fmin(quality.rejection, rejection);  // NaN gives way
  }
}

void MeasureGains(Bench& bench, Quality& quality) {
  const double nyquist = bench.pair.LowerNyquist();
  const auto gain = [&](double tone, const auto& output) {
    return Decibels(bench.Fit(output, {tone}).amplitudes[0] / kLevel);
  };
  double lowest = std::numeric_limits<double>::max();
  double highest = std::numeric_limits<double>::lowest();
  for (int step = 0; step < 25; ++step) {
    const double tone = (0.0111 + 0.03287 * step) * nyquist;
    const double here = gain(tone, bench.resample(bench.pair, bench.Input({{tone, kLevel}})));
    lowest = std::min(lowest, here);
    highest = std::max(highest, here);
  }
  quality.ripple = highest - lowest;

  const double high = 0.9 * nyquist;
  const std::vector<short> input = bench.Input({{high, kLevel}});
  quality.highGain = gain(high, bench.resample(bench.pair, input));
  if (bench.exact) quality.highGainOff = quality.highGain - gain(high, bench.exact->Of(input));

  constexpr double kConstant = 8000;
  const double tone = 0.2719 * nyquist;
  const std::vector<short> raised = bench.Input({{tone, kLevel / 2}}, kConstant);
  const SinusoidFit fit = bench.Fit(bench.resample(bench.pair, raised), {tone});
  quality.constantGain = Decibels(fit.constant / kConstant);
}

// Prints a line of the table. @return whether it is within the limits, if they are for it.
bool Print(const Pair& pair, const Quality& quality, bool isLimited) {
  bool isGood = true;
  std::printf("| %g to %g ", pair.input / 1000.0, pair.output / 1000.0);
  const auto print = [&](const char* format, double value, bool isWithin = true) {
    if (std::isnan(value)) {
      std::printf("| - ");
    } else {
      std::printf(format, value);
      const bool isBad = isLimited && !isWithin;
      if (isBad) std::printf("! ");
      isGood = isGood && !isBad;
    }
  };
  print("| %.2f ", quality.sinad);
  print("| %.3f ", quality.sinadLost, std::abs(quality.sinadLost) <= kSinadLimit);
  print("| %.0f ", quality.off < 0 ? kNone : quality.off, quality.off <= kOffLimit);
  print("| %.1f ", quality.rejection, quality.rejection >= kRejectionLimit);
  print("| %.5f ", quality.ripple, quality.ripple < kRippleLimit);
  print("| %.3f ", quality.highGain);
  print("| %.5f ", quality.highGainOff, std::abs(quality.highGainOff) <= kGainLimit);
  print("| %.4f ", quality.constantGain);
  std::printf("|\n");
  std::fflush(stdout);
  return isGood;
}

bool Measure(const Pair& pair, bool isSoxr) {
  Bench bench = {pair, isSoxr ? ResampleBySoxr : ResampleByOurs, std::nullopt};
  if (!isSoxr) bench.exact.emplace(static_cast<int>(pair.input), static_cast<int>(pair.output));
  Quality quality;
  MeasureSinad(bench, quality);
  MeasureRejection(bench, quality);
  MeasureGains(bench, quality);
  return Print(pair, quality, !isSoxr);
}

}  // namespace

int main(int argc, char** argv) {
  constexpr unsigned kFrequencies[] = {8'000, 11'025, 16'000, 22'050, 32'000, 44'100, 48'000};
  const bool isSoxr = argc == 2 && std::string_view(argv[1]) == "soxr";
  if (argc > 1 && !isSoxr) {
    std::fprintf(stderr, "usage: resampling_quality [soxr]\n");
    return 2;
  }
  std::printf(
      "| kHz | SINAD | below exact | off | rejection | ripple | at 0.9 | from exact | at 0 |\n"
      "|---|---|---|---|---|---|---|---|---|\n");
  bool isGood = true;
  for (const unsigned input : kFrequencies) {
    for (const unsigned output : kFrequencies) {
      if (output != input) isGood = Measure({input, output}, isSoxr) && isGood;
    }
  }
  isGood = Measure({44'101, 16'000}, isSoxr) && isGood;
  return isGood ? 0 : 1;
}
