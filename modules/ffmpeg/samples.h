// What decoders deliver, as interleaved 16-bit samples.
#pragma once

#include <cstddef>

#include "modules/ffmpeg/ffmpeg.h"

namespace Quorvex::ffmpeg {

/// Whether the samples of a frame can be converted.
bool IsConvertible(const AVFrame& frame) noexcept;

/// Converts `count` sample frames, beginning with frame `first`, each value as libswresample does
/// it without dither: the upper 16 bits of integers; floating point scaled, rounded half to even
/// and clipped, what is not a number becoming 0.
/// @param channels  to deliver. What was decoded beyond them is left out; where it has fewer, its
///                  last channel is repeated.
void ConvertSamples(const AVFrame& frame, std::size_t first, std::size_t count,
                    std::size_t channels, short* output) noexcept;

}  // namespace Quorvex::ffmpeg
