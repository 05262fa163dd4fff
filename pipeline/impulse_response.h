// The impulse response of the polyphase filter.
#pragma once

#include <cstdint>

namespace Quorvex {

struct WindowedSinc {
  double cutOff;          ///< the -6 dB point in parts of the input's Nyquist frequency
  double kaiserBeta;      ///< the parameter of the Kaiser window
  std::int64_t half;      ///< where the response ends, in input samples from its middle
  std::int64_t perInput;  ///< values for each input sample
};

/// How many values there are of one half: from the middle to the end, where they are 0.
std::int64_t ImpulseResponseSize(const WindowedSinc& sinc);

/// Computes them; those of the other half are the same.
void ComputeImpulseResponse(const WindowedSinc& sinc, double* values);

}  // namespace Quorvex
