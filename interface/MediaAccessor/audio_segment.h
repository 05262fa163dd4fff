// QVAUDIOSEGMENT_TAG: one time segment of a recording.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Quorvex {

/// A time segment of a recording, in hundredths of a second from its beginning. The layout is
/// binary interface: 20 bytes, start and end at offsets 4 and 8. The reserved fields carry nothing:
/// set them to 0.
struct QVAUDIOSEGMENT_TAG {
  std::int32_t reserved0 = 0;
  std::int32_t start = 0;  ///< in 1/100 s; x 10 gives milliseconds
  std::int32_t end = 0;    ///< in 1/100 s; x 10 gives milliseconds
  std::int32_t reserved1 = 0;
  std::int32_t reserved2 = 0;
};

static_assert(sizeof(QVAUDIOSEGMENT_TAG) == 20);
static_assert(offsetof(QVAUDIOSEGMENT_TAG, start) == 4);
static_assert(offsetof(QVAUDIOSEGMENT_TAG, end) == 8);

}  // namespace Quorvex
