// The decoder of Dialogic ADPCM: four bits to a 12-bit sample.
#pragma once

#include <cstddef>

namespace Quorvex {

/// Decodes a stream, piece by piece. One difference to other decoders is wanted: the predictor
/// leaks, by 127/128 a sample, and so forgets an error in the stream.
class VOXDecoder {
 public:
  /// Decodes two samples a byte, that of the high nibble first.
  /// @param samples  receives 2 x count samples: the predictor times 16, which is 16-bit scale.
  void Decode(const unsigned char* bytes, std::size_t count, short* samples) noexcept;

 private:
  std::ptrdiff_t predictor_ = 0;  // -2,048 to 2,047
  std::ptrdiff_t row_ = 0;        // of the step in the tables: 16 times its index, 0 to 48
};

}  // namespace Quorvex
