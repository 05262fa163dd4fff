// The filter of the resampling accessor as its documentation defines it, in double precision and
// with no regard to speed. It shares no code with the library's.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace benchmarks {

class WindowedSinc {
 public:
  /// @param input, output  frequencies in Hz.
  WindowedSinc(unsigned input, unsigned output);

  /// All output samples of a stream, unrounded: ceil(input samples x output/input), silence being
  /// before and after.
  std::vector<double> Resample(std::span<const short> input) const;

 private:
  std::int64_t l_;
  std::int64_t m_;
  std::int64_t half_;             // H, in input samples
  std::vector<double> response_;  // at the distances i/L input samples, from 0 to H
};

}  // namespace benchmarks
