// The coefficients of the transform: vectors of quantised levels, and noise where none were sent.
#pragma once

#include <array>
#include <cstdint>

#include "codecs/engines/g722_1/bit_reader.h"
#include "codecs/engines/g722_1/envelope.h"
#include "codecs/engines/g722_1/frame.h"

namespace Quorvex::g722_1 {

/// Reads each region's vectors. Where the frame ends too early, that region and those after it get
/// the category without vectors.
/// @return whether the frame had them all.
bool ReadVectors(BitReader& reader, const Envelope& envelope, Categories& categories,
                 Samples& coefficients) noexcept;

/// The signs of noise.
class NoiseSource {
 public:
  /// Puts noise in place of what the coarsest categories leave zero.
  void Fill(const Envelope& envelope, const Categories& categories, Samples& coefficients) noexcept;

 private:
  unsigned Draw() noexcept;

  std::array<std::uint16_t, 4> words_ = {1, 1, 1, 1};
};

}  // namespace Quorvex::g722_1
