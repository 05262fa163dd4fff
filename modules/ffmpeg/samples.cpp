// One loop a channel, whatever the width of a sample. Nothing is done but copying where nothing
// changes.
#include "modules/ffmpeg/samples.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

namespace Quorvex::ffmpeg {
namespace {

short ToInt16(std::uint8_t sample) { return static_cast<short>((sample - 128) * 256); }
short ToInt16(std::int16_t sample) { return sample; }
short ToInt16(std::int32_t sample) { return static_cast<short>(sample >> 16); }

// Clipped first, since what is rounded has to fit an integer. Adding a number so large that a
// unit is the last bit that there is rounds half to even, and can be done to several samples at
// once.
template <class Float>
short FloatToInt16(Float sample) {
  constexpr Float kUnitIsLastBit = 3 / (2 * std::numeric_limits<Float>::epsilon());
  const Float scaled = sample * 32768;
  const Float number = std::isnan(scaled) ? 0 : scaled;
  const Float clipped = std::clamp<Float>(number, -32768, 32767);
  return static_cast<short>(static_cast<int>((clipped + kUnitIsLastBit) - kUnitIsLastBit));
}
short ToInt16(float sample) { return FloatToInt16(sample); }
short ToInt16(double sample) { return FloatToInt16(sample); }

// The usual case on its own, for which compilers make vector code.
template <class Sample>
void ConvertStereo(const Sample* left, const Sample* right, std::size_t count, short* output) {
  for (std::size_t i = 0; i < count; ++i) {
    output[2 * i] = ToInt16(left[i]);
    output[2 * i + 1] = ToInt16(right[i]);
  }
}

template <class Sample>
const Sample* Plane(const AVFrame& frame, std::size_t plane) {
  return reinterpret_cast<const Sample*>(frame.extended_data[plane]);
}

template <class Sample>
void Convert(const AVFrame& frame, std::size_t first, std::size_t count, std::size_t channels,
             short* output) {
  const auto decoded = static_cast<std::size_t>(frame.ch_layout.nb_channels);
  const bool isPlanar = av_sample_fmt_is_planar(static_cast<AVSampleFormat>(frame.format)) != 0;
  if (isPlanar && channels == 2 && decoded >= 2) {
    return ConvertStereo(Plane<Sample>(frame, 0) + first, Plane<Sample>(frame, 1) + first, count,
                         output);
  }
  const std::size_t stride = isPlanar ? 1 : decoded;
  for (std::size_t channel = 0; channel < channels; ++channel) {
    const std::size_t from = std::min(channel, decoded - 1);
    const Sample* const samples = isPlanar ? Plane<Sample>(frame, from) + first
                                           : Plane<Sample>(frame, 0) + from + first * stride;
    for (std::size_t i = 0; i < count; ++i) {
      output[i * channels + channel] = ToInt16(samples[i * stride]);
    }
  }
}

}  // namespace

bool IsConvertible(const AVFrame& frame) noexcept {
  if (frame.nb_samples < 0 || frame.ch_layout.nb_channels < 1) return false;
  switch (av_get_packed_sample_fmt(static_cast<AVSampleFormat>(frame.format))) {
    case AV_SAMPLE_FMT_U8:
    case AV_SAMPLE_FMT_S16:
    case AV_SAMPLE_FMT_S32:
    case AV_SAMPLE_FMT_FLT:
    case AV_SAMPLE_FMT_DBL:
      return true;
    default:
      return false;
  }
}

void ConvertSamples(const AVFrame& frame, std::size_t first, std::size_t count,
                    std::size_t channels, short* output) noexcept {
  const auto decoded = static_cast<std::size_t>(frame.ch_layout.nb_channels);
  if (frame.format == AV_SAMPLE_FMT_S16 && decoded == channels) {
    const auto* const samples = reinterpret_cast<const short*>(frame.extended_data[0]);
    std::memcpy(output, samples + first * channels, count * channels * sizeof(short));
    return;
  }
  switch (av_get_packed_sample_fmt(static_cast<AVSampleFormat>(frame.format))) {
    case AV_SAMPLE_FMT_U8:
      return Convert<std::uint8_t>(frame, first, count, channels, output);
    case AV_SAMPLE_FMT_S16:
      return Convert<std::int16_t>(frame, first, count, channels, output);
    case AV_SAMPLE_FMT_S32:
      return Convert<std::int32_t>(frame, first, count, channels, output);
    case AV_SAMPLE_FMT_FLT:
      return Convert<float>(frame, first, count, channels, output);
    default:
      return Convert<double>(frame, first, count, channels, output);
  }
}

}  // namespace Quorvex::ffmpeg
